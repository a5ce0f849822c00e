// The models that there are, each made by a function in the file of its name. A new headset is declared here
// and listed in models.cpp.
#pragma once

#include "virtual_headset/models/model.h"

namespace platform::virtual_headsets {

HeadsetModel anker_powerconf();
HeadsetModel dell_sp325();
HeadsetModel epos_impact_d();
HeadsetModel jabra_evolve_link_ms();
HeadsetModel jabra_link_380c();
HeadsetModel logitech_g535();
HeadsetModel logitech_mx_brio();
HeadsetModel microsoft_game_voice();
HeadsetModel poly_blackwire_3220();
HeadsetModel poly_voyager_base();
HeadsetModel razer_blackshark_v2();
HeadsetModel sennheiser_sc_660();
HeadsetModel yealink_wh66();

}  // namespace platform::virtual_headsets
