#pragma once

#include <OpenColorIO/OpenColorIO.h>

#include <string>
#include <vector>

namespace Corvel {

/// A configuration that is open, and what it calls things. Failures name the file, and what there is instead.
class ColourConfig {
public:
    /// Throws Failure (InputUnreadable) for a file that is missing or is no configuration.
    explicit ColourConfig(const std::string& path);

    const std::string& path() const { return path_; }
    const OCIO_NAMESPACE::ConstConfigRcPtr& library() const { return config; }

    /// The name under which the configuration has that space, which may be an alias or a role. Throws Failure
    /// (Usage).
    std::string space(const std::string& name) const;
    /// The first of the names that it has as a space, an alias or a role; empty for none.
    std::string firstOf(const std::vector<std::string>& names) const;
    /// Displays and views, letter case ignored; an empty name is the default one. Throw Failure (Usage).
    std::string display(const std::string& name) const;
    std::string view(const std::string& display, const std::string& name) const;
    /// Throws Failure (Usage) for a look that it does not have.
    void checkLooks(const std::string& looks) const;

    std::vector<std::string> spaces() const;
    std::vector<std::string> displays() const;
    std::vector<std::string> views(const std::string& display) const;

private:
    const std::string path_;
    OCIO_NAMESPACE::ConstConfigRcPtr config;
};

}  // namespace Corvel
