// The first byte picks a codec. Any settings text is understood or refused with a StatusError, and what was
// understood is written as a text that means the same.

#include <cstdlib>

#include "worker/Status.h"
#include "worker/codec/CodecTable.h"
#include "worker/codec/Settings.h"

using namespace Morvane::Worker;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const auto codecs = codecTable();
    const Codec& codec = codecs[data[0] % codecs.size()];
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    Settings::parse(Settings::defaults(codec).text(), codec);
    try {
        const Settings settings = Settings::parse(text, codec);
        settings.summary();
        if (Settings::parse(settings.text(), codec).text() != settings.text())
            std::abort();
        Settings::fromPropertyList(settings.propertyListText(), codec);
    } catch (const StatusError&) {
    }
    return 0;
}
