#include <algorithm>

#include "virtual_headset/models/headsets.h"

namespace platform::virtual_headsets {
namespace {

// Sorted by key.
constexpr HeadsetModel (*makers[])() = {
    anker_powerconf,     dell_sp325,        epos_impact_d,        jabra_evolve_link_ms, jabra_link_380c,
    logitech_g535,       logitech_mx_brio,  microsoft_game_voice, poly_blackwire_3220,  poly_voyager_base,
    razer_blackshark_v2, sennheiser_sc_660, yealink_wh66,
};

std::vector<const HeadsetModel*> make_models() {
    std::vector<const HeadsetModel*> made;
    for (const auto make : makers) {
        made.push_back(new HeadsetModel(make()));
    }
    return made;
}

}  // namespace

std::span<const HeadsetModel* const> models() {
    // Made by the first who asks and never destroyed, so that static objects may ask in their constructors
    // and destructors.
    static const auto& all = *new std::vector<const HeadsetModel*>(make_models());
    return all;
}

const HeadsetModel* find_model(std::string_view key) {
    const auto all = models();
    const auto found = std::ranges::find(all, key, &HeadsetModel::key);
    return found == all.end() ? nullptr : *found;
}

}  // namespace platform::virtual_headsets
