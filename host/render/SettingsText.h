#pragma once

#include <map>
#include <string>

namespace Corvel {

/// A codec settings text, `key=value:key=value`: what a person wrote, with additions of the host's for keys
/// that the person left alone. In values and keys a backslash takes the next character as it is and '…' takes
/// all between the quotes as it is (the escaping of FFmpeg's utilities manual, "Quoting and escaping").
///
/// The person's own text is never rewritten; additions are put behind it.
class SettingsText {
public:
    explicit SettingsText(std::string given);

    /// Whether the text has that key.
    bool has(const std::string& key) const;
    /// The value of that key, the last where it stands there twice; empty where it does not.
    std::string value(const std::string& key) const;
    /// Adds `key=value`, escaped, unless the text has the key.
    void add(const std::string& key, const std::string& value);

    const std::string& text() const { return text_; }

private:
    std::string text_;
    std::map<std::string, std::string> values;
};

}  // namespace Corvel
