#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Corvel {

/// What the helper says about one codec.
struct CodecFacts {
    int index = 0;
    std::string type;  ///< four characters
    std::string name;
    /// "bits" (a number), "alpha", "intra", "lossless" (booleans), "sizes" and "quality" (words); null where
    /// the helper doesn't say.
    nlohmann::ordered_json facts;
};

/// The facts that a codec's list of options holds: the properties "codec/bits", "codec/alpha" and so on of
/// the property list `optionsText`. A list that can't be read says nothing.
nlohmann::ordered_json readCodecFacts(const std::string& optionsText);

/// Starts a helper, asks it about every codec, and stops it. Throws Failure (HelperFailed).
std::vector<CodecFacts> askForCodecs(class Reporter& reporter);

}  // namespace Corvel
