#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/subscription.h"
#include "platform/system_utilities.h"

namespace orvantis::sim {

/// The simulated power assertions: count what is asked, refuse when told to (`refuse` is the
/// error number then), and tell whether one is held. Main thread only.
class PowerAssertions final : public platform::PowerAssertions {
public:
    int create(std::string_view name, std::uint32_t& id) override;
    int release(std::uint32_t id) override;

    int creates = 0, releases = 0;
    int refuse = 0;         ///< create() answers this when not 0
    int releaseResult = 0;  ///< what release() answers
    std::uint32_t nextId = 100, releasedId = 0;
    bool held = false;
    std::string lastName;
};

/// The simulated lid-close control: records each call ("disable 1", "disable 0",
/// "provision", "deprovision") and fails when told to.
class LidSleepControl final : public platform::LidSleepControl {
public:
    bool setDisableSleep(bool disable) override;
    bool provision() override;
    bool deprovision() override;

    std::vector<std::string> calls;
    bool fail = false;  ///< setDisableSleep() fails
    bool disabled = false;
    bool provisionResult = true, deprovisionResult = true;
};

/// The simulated applications of the session: the frontmost one and the running ones, as the
/// test sets them, with their notices.
class Applications final : public platform::Applications, public platform::ApplicationWatch {
public:
    std::optional<platform::ApplicationInfo> frontmostApplication() const override { return frontmost; }
    std::vector<platform::ApplicationInfo> runningApplications() const override { return running; }
    [[nodiscard]] Subscription onActivated(Callback c) override { return activated.add(std::move(c)); }
    [[nodiscard]] Subscription onLaunched(Callback c) override { return launched.add(std::move(c)); }
    [[nodiscard]] Subscription onTerminated(Callback c) override { return terminated.add(std::move(c)); }

    /// `id` comes to the front; the activation is told.
    void activate(const std::string& id);
    /// `id` starts or ends; the change is told.
    void launch(const std::string& id);
    void terminate(const std::string& id);

    std::optional<platform::ApplicationInfo> frontmost;
    std::vector<platform::ApplicationInfo> running;
    CallbackList<> activated, launched, terminated;
};

/// The simulated pointing devices: a list the test edits, whose natural scrolling is read back;
/// a write to a device not in the list fails, as for an unplugged one.
class PointerDevices final : public platform::PointerDevices {
public:
    std::vector<platform::PointerDeviceInfo> devices() const override { return list; }
    bool setNaturalScrolling(std::int64_t id, bool natural) override;
    [[nodiscard]] Subscription onDevicesChanged(std::function<void()> c) override { return changed.add(std::move(c)); }
    /// The device's natural scrolling now (its default until written).
    bool natural(std::int64_t id) const;

    std::vector<platform::PointerDeviceInfo> list;
    CallbackList<> changed;
    int writes = 0;

private:
    std::map<std::int64_t, bool> natural_;
};

/// Records each command line instead of running it; answers `status`, or a launch failure.
class CommandRunner final : public platform::CommandRunner {
public:
    std::optional<int> run(const std::string& program, const std::vector<std::string>& arguments,
                           std::string& launchError) override;

    std::vector<std::vector<std::string>> lines;
    int status = 0;
    bool cannotLaunch = false;
};

}  // namespace orvantis::sim
