#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis {

/// The characters of the word being typed, oldest first, for the layout switcher. A character
/// is one grapheme cluster kept as a short UTF-8 string. Bounded at `kLimit` characters: a run
/// longer than that is no word the user will want retyped, so the buffer wipes itself rather
/// than rolling over. Owned by the switch coordinator; main thread only.
class KeystrokeBuffer {
public:
    /// The most characters the buffer holds.
    static constexpr std::size_t kLimit = 256;

    /// The characters, oldest first.
    const std::vector<std::string>& characters() const { return characters_; }
    bool isEmpty() const { return characters_.empty(); }
    /// Number of characters (grapheme clusters).
    std::size_t count() const { return characters_.size(); }
    /// The characters joined.
    std::string string() const;

    /// Adds a typed character. Below the limit it is appended; at the limit the buffer is
    /// emptied and the new character dropped as well, so the 257th keystroke of a run leaves
    /// the buffer empty. Text of several clusters (an input method committing a run at once)
    /// counts as that many keystrokes, one after the other; empty text does nothing.
    void append(std::string_view character);

    /// Removes the last character; does nothing on an empty buffer.
    void removeLastCharacter();

    /// Empties the buffer.
    void reset() { characters_.clear(); }

    /// Replaces the whole content with `characters`, keeping the first `kLimit` if there are
    /// more. Each element is taken as one character as it stands.
    void replaceAll(std::vector<std::string> characters);

    /// Replaces the whole content with the clusters of `text`, keeping the first `kLimit`.
    void replaceAll(std::string_view text);

private:
    void appendOne(std::string character);

    std::vector<std::string> characters_;
};

}  // namespace orvantis
