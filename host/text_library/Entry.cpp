#include "host/burnin/TextLibrary.h"
#include "host/text_library/PangoDrawer.h"

namespace Corvel {
namespace {

class PangoLibrary : public TextLibrary {
public:
    std::unique_ptr<TextDrawer> createDrawer() const override { return makePangoDrawer(); }
};

}  // namespace
}  // namespace Corvel

extern "C" __attribute__((visibility("default"))) const Corvel::TextLibrary* corvelTextLibrary() {
    static const Corvel::PangoLibrary library;
    return &library;
}
