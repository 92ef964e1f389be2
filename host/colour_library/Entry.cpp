#include "host/colour_library/Conversion.h"

namespace Corvel {
namespace {

class OpenColourLibrary : public ColourLibrary {
public:
    std::shared_ptr<const ColourConversion> openConversion(const std::string& configPath,
                                                           const ColourRequest& request,
                                                           const ColourInput& input) const override {
        return makeConversion(configPath, request, input);
    }
};

}  // namespace
}  // namespace Corvel

extern "C" __attribute__((visibility("default"))) const Corvel::ColourLibrary* corvelColourLibrary() {
    static const Corvel::OpenColourLibrary library;
    return &library;
}
