#include "platform/sim/system_utilities.h"

#include <algorithm>
#include <utility>

namespace orvantis::sim {

int PowerAssertions::create(std::string_view name, std::uint32_t& id) {
    ++creates;
    lastName = std::string(name);
    if (refuse != 0) return refuse;
    id = ++nextId;
    held = true;
    return 0;
}

int PowerAssertions::release(std::uint32_t id) {
    ++releases;
    releasedId = id;
    held = false;
    return releaseResult;
}

bool LidSleepControl::setDisableSleep(bool disable) {
    calls.push_back(disable ? "disable 1" : "disable 0");
    if (fail) return false;
    disabled = disable;
    return true;
}

bool LidSleepControl::provision() {
    calls.push_back("provision");
    return provisionResult;
}

bool LidSleepControl::deprovision() {
    calls.push_back("deprovision");
    return deprovisionResult;
}

void Applications::activate(const std::string& id) {
    frontmost = platform::ApplicationInfo{id, id, 1};
    activated.notify();
}

void Applications::launch(const std::string& id) {
    running.push_back(platform::ApplicationInfo{id, id, 2});
    launched.notify();
}

void Applications::terminate(const std::string& id) {
    std::erase_if(running, [&](const platform::ApplicationInfo& a) { return a.bundleID == id; });
    terminated.notify();
}

bool PointerDevices::setNaturalScrolling(std::int64_t id, bool natural) {
    ++writes;
    if (std::none_of(list.begin(), list.end(), [&](const platform::PointerDeviceInfo& d) { return d.id == id; }))
        return false;
    natural_[id] = natural;
    return true;
}

bool PointerDevices::natural(std::int64_t id) const {
    if (auto it = natural_.find(id); it != natural_.end()) return it->second;
    for (const auto& d : list)
        if (d.id == id) return d.naturalScrollingDefault;
    return false;
}

std::optional<int> CommandRunner::run(const std::string& program, const std::vector<std::string>& arguments,
                                      std::string& launchError) {
    std::vector<std::string> line{program};
    line.insert(line.end(), arguments.begin(), arguments.end());
    lines.push_back(std::move(line));
    if (cannotLaunch) {
        launchError = "No such file or directory";
        return std::nullopt;
    }
    return status;
}

}  // namespace orvantis::sim
