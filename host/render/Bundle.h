#pragma once

#include <string>

namespace Corvel {

/// Where the parts of the installed application are: Corvel.app, found from the running executable.
class Bundle {
public:
    /// Throws Failure (HelperFailed) when the executable does not run from a Corvel.app.
    Bundle();

    const std::string& path() const { return path_; }
    std::string contents() const { return path_ + "/Contents"; }
    /// The helper's executable; the bridge starts this very file.
    std::string helper() const;

    /// Throws Failure (HelperFailed), which says what is wrong, unless the helper is a file that can be
    /// executed.
    void checkHelper() const;

private:
    std::string path_;
};

}  // namespace Corvel
