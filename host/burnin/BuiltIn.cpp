#include "host/burnin/BuiltIn.h"

namespace Corvel {

const std::map<std::string, const char*>& builtInBurnIns() {
    static const std::map<std::string, const char*> named{
        {"default", R"json({
  "texts": [
    {"at": "top-left", "text": "{show}"},
    {"at": "top-center", "text": "{timecode}"},
    {"at": "top-right", "text": "{date}"},
    {"at": "bottom-left", "text": "{file}"},
    {"at": "bottom-center", "text": "{note}"},
    {"at": "bottom-right", "text": "{frame}"}
  ]
})json"},
        {"frame", R"json({"texts": [{"at": "bottom-right", "text": "{frame}"}]})json"},
        {"timecode", R"json({"texts": [{"at": "bottom-center", "text": "{timecode}", "size": 0.04}]})json"}};
    return named;
}

const std::map<std::string, const char*>& builtInSlates() {
    static const std::map<std::string, const char*> named{{"default", R"json({
  "title": "{show}",
  "heading": "{shot}",
  "lines": [
    {"label": "Version", "text": "{version}"},
    {"label": "Task", "text": "{task}"},
    {"label": "Artist", "text": "{artist}"},
    {"label": "Company", "text": "{company}"},
    {"label": "Date", "text": "{date}"},
    {"label": "Frames", "text": "{first} - {last} ({frames})"},
    {"label": "Time code", "text": "{start_timecode}"},
    {"label": "Reel", "text": "{reel}"},
    {"label": "Format", "text": "{width} x {height}"},
    {"label": "Rate", "text": "{fps} fps"},
    {"label": "Codec", "text": "{codec}"},
    {"label": "File", "text": "{output}"},
    {"label": "Note", "text": "{note}"}
  ]
})json"}};
    return named;
}

}  // namespace Corvel
