#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis::platform {

/// One keyboard input source of the desktop (under X11, one XKB layout such as "ru(phonetic)").
struct InputSourceDescriptor {
    /// The desktop's identifier of the source; empty when the desktop gives none.
    std::string sourceID;
    /// The name shown to users; empty when the desktop gives none.
    std::string localizedName;
    /// The languages the source is made for, primary first, as two-letter codes where such
    /// a code exists ("en", "ru", "uk", "de"), else as the desktop gives them. May be empty.
    std::vector<std::string> languages;

    /// Identity is the identifier and the name; the languages take no part in it.
    bool operator==(const InputSourceDescriptor& other) const {
        return sourceID == other.sourceID && localizedName == other.localizedName;
    }
};

/// What one physical key types in a layout. An empty string: the key types nothing at that
/// level (a dead key, a modifier, or nothing is bound).
struct KeyCharacters {
    std::string unshifted;
    std::string shifted;
    bool operator==(const KeyCharacters&) const = default;
};

/// Physical key position to what the key types. Positions are the virtual key codes of the
/// classic desktop keyboard (A = 0, S = 1, ..., Space = 49; see platform/x11/key_positions.h),
/// so that tables of different layouts and of different backends line up key by key. Keys the
/// backend can't read are absent.
using KeyLayout = std::map<std::uint16_t, KeyCharacters>;

/// The desktop's keyboard input sources: listing, the current one, selection and the key
/// tables of each. Main thread only. Nothing here is cached by callers: every answer is the
/// desktop's state at the time of the call, so a change of layouts takes effect at once.
class InputSources {
public:
    virtual ~InputSources() = default;

    /// The enabled keyboard sources in the desktop's own order (the order the user switches
    /// through). Sources the desktop can't describe fully appear with empty fields; it is up
    /// to the caller to skip them. Empty when the list can't be had.
    virtual std::vector<InputSourceDescriptor> enabledSources() const = 0;

    /// The source now in use for typing, or nullopt when the desktop can't tell.
    virtual std::optional<InputSourceDescriptor> currentSource() const = 0;

    /// Makes the source with that identifier current. False, with nothing changed, when no
    /// enabled source has the identifier or the desktop refuses the change.
    virtual bool select(std::string_view sourceID) = 0;

    /// What each physical key types in that source without and with Shift, or nullopt when
    /// the source has no key table (an input method) or the data can't be read.
    virtual std::optional<KeyLayout> keyLayout(std::string_view sourceID) const = 0;
};

}  // namespace orvantis::platform
