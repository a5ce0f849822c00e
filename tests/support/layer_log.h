// The log of a layer that is tested without the plug-in boundary: getPluginLogger() gives this logger.
#pragma once

#include <memory>

#include "tests/support/recording_logger.h"

namespace test_support {

/// Installs a fresh logger and returns it. It stays until the next call, or until it is let go.
std::shared_ptr<RecordingLogger> install_layer_logger();

}  // namespace test_support
