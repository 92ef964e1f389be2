#pragma once

#include <string>
#include <vector>

#include "host/presets/Preset.h"

namespace Corvel {

/// The presets of the application and of the person: one JSON file each, NAME.json. A person's preset hides
/// the shipped one of the same name. Every operation looks at the files anew, so that several programs may
/// use them; throws Failure (Usage) with a sentence that names the file.
class PresetStore {
public:
    /// `shipped` and `own` are folders; neither needs to be there. A relative or empty `own` means that the
    /// person has no place for settings: there is nothing of theirs then, and saving is refused.
    PresetStore(std::string shipped, const std::string& own);

    /// All of them, by name. A file that is no preset is left out, with a warning.
    std::vector<Preset> list() const;
    /// The preset of that name; else of the only name that begins so, letter case ignored.
    Preset load(const std::string& name) const;
    /// Writes `preset` under its name, in place of an older one of the person's; the folders are made. The
    /// file is whole at any time. Answers its path.
    std::string save(const Preset& preset) const;
    /// Deletes the person's preset of exactly that name; a shipped one that it hid is back then.
    void remove(const std::string& name) const;

private:
    std::string ownPath(const std::string& name) const;

    const std::string shipped;
    const std::string own;
};

/// Where a person's presets are: corvel/presets in $XDG_CONFIG_HOME or, where that is no absolute path, in
/// ~/.config (the XDG base directory specification). Empty where there is no home either.
std::string personalPresetFolder();

/// The store of the application whose bundle's contents are at that path.
PresetStore presetStore(const std::string& bundleContents);

}  // namespace Corvel
