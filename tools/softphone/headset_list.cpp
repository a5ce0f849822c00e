#include "tools/softphone/headset_list.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace softphone {
namespace {

template <class List>
auto find_if(List& list, const auto& matches) -> decltype(&*list.begin()) {
    const auto found = std::ranges::find_if(list, matches);
    return found == list.end() ? nullptr : &*found;
}

template <class List>
auto find_by_name(List& list, std::string_view name) {
    return find_if(list, [&](const Headset& headset) {
        return headset.name == name || (headset.number != 0 && std::to_string(headset.number) == name);
    });
}

template <class List>
auto find_by_number(List& list, int number) {
    return find_if(list, [&](const Headset& headset) { return headset.number == number; });
}

template <class List>
auto find_by_serial(List& list, std::string_view serial) {
    const auto plugged =
        find_if(list, [&](const Headset& headset) { return headset.plugged && headset.serial == serial; });
    return plugged ? plugged
                   : find_if(list, [&](const Headset& headset) { return headset.serial == serial; });
}

/// "jabra-link-380c" for "Jabra Link 380c".
std::string name_from(std::string_view product) {
    std::string name;
    for (const char c : product) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0)
            name += static_cast<char>(std::tolower(byte));
        else if (!name.empty() && name.back() != '-')
            name += '-';
    }
    if (!name.empty() && name.back() == '-')
        name.pop_back();
    return name.empty() ? "headset" : name;
}

}  // namespace

const Indicator* Headset::indicator(Usage usage) const {
    const auto found = std::ranges::find(indicators, usage, &Indicator::usage);
    return found == indicators.end() ? nullptr : &*found;
}

std::string lit_names(const std::vector<Indicator>& indicators) {
    std::string names;
    for (const auto& indicator : indicators)
        if (indicator.lit)
            names += (names.empty() ? "" : ", ") + usage_name(indicator_names(), indicator.usage);
    return names.empty() ? "all dark" : names + " lit";
}

Headset& HeadsetList::add(int number, const std::string& name) {
    std::string free_name = name;
    for (int copy = 2; find(free_name); ++copy)
        free_name = name + "-" + std::to_string(copy);
    Headset& headset = headsets_.emplace_back();
    headset.number = number;
    headset.name = free_name;
    return headset;
}

void HeadsetList::take_found(const std::vector<FoundHeadset>& found) {
    for (auto& headset : headsets_)
        if (headset.number == 0)
            headset.plugged = std::ranges::count(found, headset.serial, &FoundHeadset::serial) != 0;
    for (const auto& headset : found)
        if (!find_serial(headset.serial))
            add_found(headset);
}

Headset& HeadsetList::add_found(const FoundHeadset& found) {
    Headset& added = add(0, name_from(found.product));
    added.product = found.product;
    added.serial = found.serial;
    added.plugged = true;
    return added;
}

Headset* HeadsetList::find(std::string_view name) {
    return find_by_name(headsets_, name);
}

const Headset* HeadsetList::find(std::string_view name) const {
    return find_by_name(headsets_, name);
}

Headset* HeadsetList::find_number(int number) {
    return find_by_number(headsets_, number);
}

const Headset* HeadsetList::find_number(int number) const {
    return find_by_number(headsets_, number);
}

std::string HeadsetList::name_of(int number) const {
    const Headset* known = find_number(number);
    return known ? known->name : std::to_string(number);
}

Headset* HeadsetList::find_serial(std::string_view serial) {
    return find_by_serial(headsets_, serial);
}

const Headset* HeadsetList::find_serial(std::string_view serial) const {
    return find_by_serial(headsets_, serial);
}

Headset& HeadsetList::choose(const std::optional<std::string>& name) {
    if (name) {
        if (Headset* named = find(*name))
            return *named;
        throw CommandError("there is no headset " + quoted(*name) + "; see headsets");
    }
    const auto plugged = [](const Headset& headset) { return headset.plugged; };
    switch (std::ranges::count_if(headsets_, plugged)) {
        case 0:
            throw CommandError("no headset is plugged");
        case 1:
            return *std::ranges::find_if(headsets_, plugged);
        default:
            throw CommandError("several headsets are plugged: say which, " + join(names()));
    }
}

void HeadsetList::set_ready(const Headset* ready) {
    for (auto& headset : headsets_)
        headset.ready = &headset == ready;
}

void HeadsetList::take_log_line(const std::string& line) {
    // EACCES: the node's permissions. EPERM: the device cgroup of a container. The last is the text of the
    // virtual headsets.
    static constexpr std::string_view reasons[] = {"Permission denied", "Operation not permitted",
                                                   "Access is denied"};
    const auto says = [&](std::string_view text) { return line.find(text) != line.npos; };
    if (says("enumerate_hid_device: complete hid_enumerate()"))
        refusals_.clear();
    else if (says("enumerate_hid_device: cannot open ") && std::ranges::any_of(reasons, says))
        refusals_.push_back(line);
}

bool HeadsetList::has_permission(std::string_view serial) const {
    const std::string mention = ", sn = " + std::string(serial) + ": ";
    return std::ranges::none_of(refusals_,
                                [&](const std::string& line) { return line.find(mention) != line.npos; });
}

Words HeadsetList::names() const {
    Words names;
    std::ranges::transform(headsets_, std::back_inserter(names), &Headset::name);
    return names;
}

}  // namespace softphone
