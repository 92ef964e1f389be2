#include "host/app/CodecFacts.h"

#include <spdlog/spdlog.h>

#include <boost/token_functions.hpp>
#include <memory>

#include "host/render/HelperSession.h"
#include "quicktime/QuickTimeCodecWriterIPCController.h"

namespace Corvel {
namespace {

namespace Property = Morvane::Property;
using Json = nlohmann::ordered_json;
using Morvane::QuickTime::QuickTimeCodecWriterInterface;

struct Fact {
    const char* name;
    bool yesOrNo;
};

constexpr Fact facts[] = {{"bits", false},    {"alpha", true},  {"intra", true},
                          {"lossless", true}, {"sizes", false}, {"quality", false}};

Json valueOf(Property::Base& property, bool yesOrNo) {
    if (const auto* number = Property::asInt(&property, 1)) {
        return yesOrNo ? Json(number->values[0] != 0) : Json(number->values[0]);
    }
    return yesOrNo ? Json() : Json(property.toString());
}

CodecFacts askForCodec(QuickTimeCodecWriterInterface& helper, int index, const std::string& entry) {
    CodecFacts codec;
    codec.index = index;
    const std::size_t tab = entry.find('\t');
    codec.type = entry.substr(0, tab);
    codec.name = tab == std::string::npos ? entry : entry.substr(tab + 1);
    helper.setCodec(index);
    codec.facts = readCodecFacts(helper.textOperation21(""));
    return codec;
}

// Stopping a helper that has gone already throws.
void stop(std::unique_ptr<QuickTimeCodecWriterInterface>& helper) {
    try {
        delete helper.release();
    } catch (const std::exception& error) {
        spdlog::warn("while stopping the QuickTime helper: {}", error.what());
    }
}

}  // namespace

Json readCodecFacts(const std::string& optionsText) {
    Property::PropertyList options;
    try {
        Property::readPropertyList(optionsText, options);
    } catch (const boost::escaped_list_error& error) {
        spdlog::warn("the helper's list of codec options can't be read: {}", error.what());
    }
    Json found;
    for (const Fact& fact : facts) {
        found[fact.name] = nullptr;
        for (const auto& option : options) {
            if (option->name == std::string("codec/") + fact.name) {
                found[fact.name] = valueOf(*option, fact.yesOrNo);
            }
        }
    }
    return found;
}

std::vector<CodecFacts> askForCodecs(Reporter& reporter) {
    HelperSession session(0, reporter);
    std::unique_ptr<QuickTimeCodecWriterInterface> helper;
    session.start([&helper] { helper.reset(Morvane::QuickTime::createWriterController()); });
    session.setActivity("asking for the codecs");
    std::vector<CodecFacts> codecs;
    const char* const* const entries = helper->codecList();
    for (int index = 0; entries[index] != nullptr; ++index) {
        codecs.push_back(askForCodec(*helper, index, entries[index]));
    }
    session.expectEnd();
    stop(helper);
    return codecs;
}

}  // namespace Corvel
