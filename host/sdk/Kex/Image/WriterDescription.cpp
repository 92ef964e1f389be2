#include <strings.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "Kex/Image/Writer.h"

namespace Kex::Image {

namespace {

/// All records in the order in which they were added. Made when the first record is constructed, so that it
/// outlives every record of a plug-in that is still loaded when the process ends.
std::vector<const Writer::Description*>& records() {
    static std::vector<const Writer::Description*> all;
    return all;
}

bool names(const Writer::Description& record, const std::string& extension) {
    std::istringstream words(record.formats != nullptr ? record.formats : "");
    std::string word;
    while (words >> word) {
        if (strcasecmp(word.c_str(), extension.c_str()) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

Writer::Description::Description() {
    records();
}

Writer::Description::~Description() {
    auto& all = records();
    all.erase(std::remove(all.begin(), all.end(), this), all.end());
}

void Writer::Description::add(Kex::Image::Description* record) {
    records().push_back(static_cast<const Writer::Description*>(record));
}

const Writer::Description* Writer::Description::find(const std::string& extension) {
    const auto& all = records();
    const auto found =
        std::find_if(all.rbegin(), all.rend(), [&](const auto* record) { return names(*record, extension); });
    return found != all.rend() ? *found : nullptr;
}

}  // namespace Kex::Image
