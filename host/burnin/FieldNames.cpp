#include "host/burnin/FieldNames.h"

#include <algorithm>

namespace Corvel {

const std::vector<std::string>& fieldNames() {
    static const std::vector<std::string> names{
        // Of the frame.
        "frame", "file", "timecode",
        // Of the render.
        "name", "input", "output", "first", "last", "frames", "fps", "width", "height", "codec", "quality",
        "reel", "start_timecode", "end_timecode", "date", "time", "user", "host",
        // Of the person.
        "show", "sequence", "shot", "version", "task", "artist", "company", "note"};
    return names;
}

bool isNumberField(const std::string& field) {
    for (const char* number : {"frame", "first", "last", "frames", "width", "height"}) {
        if (field == number) {
            return true;
        }
    }
    return false;
}

bool isTimeField(const std::string& field) {
    return field == "date" || field == "time";
}

}  // namespace Corvel
