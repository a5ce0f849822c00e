#include "tests/support/layer_log.h"

#include "base/plugin_log.h"
#include "platform/mutex.h"

namespace {

platform::Guarded<std::weak_ptr<test_support::RecordingLogger>>& installed() {
    static auto* const logger = new platform::Guarded<std::weak_ptr<test_support::RecordingLogger>>;
    return *logger;
}

}  // namespace

std::shared_ptr<plugin_control::IPluginLogger> getPluginLogger() {
    return installed().get().lock();
}

std::shared_ptr<test_support::RecordingLogger> test_support::install_layer_logger() {
    auto logger = std::make_shared<RecordingLogger>();
    installed().set(logger);
    return logger;
}
