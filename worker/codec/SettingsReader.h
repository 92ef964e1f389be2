#pragma once

#include "worker/codec/Settings.h"
#include "worker/codec/SettingsText.h"

#include <map>
#include <string>

namespace Morvane::Worker {

/// Turns the pairs of a settings text into checked settings: takes each key out of `given` as it is
/// understood; what is left at the end is refused. One use each.
class SettingsReader {
public:
    SettingsReader(const Codec& row, const SettingPairs& pairs);

    /// Throws StatusError (NotSupportedByCodec) with the sentence that says which key is wrong and what is
    /// possible.
    Settings read();

private:
    void readOptions();
    void readProfile();
    void readBits();
    void readAlpha();
    void readColour();
    void readCurve();
    void readPreset();
    void readMatrix(bool rgb);
    void readRange(bool rgb);
    void readFields();
    void readAspect();
    void readThreads();
    void readTimecode();
    void readMetadata();
    void refuseTheRest() const;

    /// The value of `key`, taken out; null when it was not given.
    const std::string* take(const std::string& key);
    /// The picture that the settings so far lead to; throws where they contradict each other.
    const CodecPicture& picture() const;

    const Codec& codec;
    std::map<std::string, std::string> given;
    std::map<std::string, std::string> taken;
    Settings settings;
};

}  // namespace Morvane::Worker
