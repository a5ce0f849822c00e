// Everything that the plug-in asks of the system it runs on. A program is linked with one platform, which
// defines current(); porting the plug-in means giving these parts.
#pragma once

#include "platform/clock.h"
#include "platform/hid_backend.h"
#include "platform/hid_parser.h"
#include "platform/message_window.h"

namespace platform {

class Platform {
  public:
    virtual ~Platform() = default;

    virtual HidBackend& hid() = 0;
    virtual const HidParser& parser() = 0;
    virtual MessageWindows& windows() = 0;
    virtual Clock& clock() = 0;
};

/// The platform that this program is linked with. Lives as long as the process: threads that are still on
/// their way out at exit may use it. Thread: any.
Platform& current();

}  // namespace platform
