#include "tools/common/json.h"

#include "tools/common/text.h"

namespace tools {

std::string to_text(const Json& json) {
    return printable_json(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace tools
