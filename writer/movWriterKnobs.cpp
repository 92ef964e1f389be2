#include "Kex/Image/Knob_Closure.h"
#include "writer/movWriter.h"

namespace Morvane::Writer {

namespace {

using namespace Kex::Image;

constexpr const char* qualityEntries[] = {"Min", "Low", "Normal", "High", "Max", "Lossless", nullptr};
constexpr const char* unitEntries[] = {"Seconds", "Frames", nullptr};

constexpr const char* flattenTooltip = "Flattens a movie so it can be played while still downloading";

constexpr const char* aspectTooltip =
    "If on, use the incoming format's pixel aspect ratio.\n"
    "If off, allow the codec to set the aspect ratio.\n"
    "Codecs writing formats such as PAL and NTSC should typically be allowed to set the aspect ratio, but "
    "you may "
    "want to override this for other codecs which otherwise assume square pixels.";

constexpr const char* audioOffsetTooltip =
    "Offset the audio file by the given number of seconds/frames. A value of -10 seconds means the first "
    "frame of "
    "the image sequence syncs to the 10 second mark of the audio. A value of +10 seconds means the audio "
    "will start "
    "10 seconds into the image sequence";

// "though" is how the text has always read, and stays.
constexpr const char* timeCodeTooltip =
    "Add a time code track to the generated QuickTime file. This requires the presence of the "
    "\"input/timecode\" key "
    "in the metadata. It is possible to give the time code track its reel name though the \"quicktime/reel\" "
    "key in "
    "metadata. This is automatically read from any QuickTime file already containing a time code track and "
    "propagated "
    "through the tree. If this is not present the reel name will be written blank. Use the ModifyMetaData "
    "node to add "
    "it.\n"
    "If the timecode is missing, the track will not be written.";

}  // namespace

void movWriter::knobs(Knob_Closure& closure) {
    if (!controllerAvailable) {
        return;
    }
    declareCodecKnobs(closure);
    declareAudioKnobs(closure);
    declareTimeCodeKnob(closure);
}

void movWriter::declareCodecKnobs(Knob_Closure& closure) {
    closure(Knob_Enumeration, Store_Int, &codec, "codec", "codec", controller->codecList());
    closure(Knob_Button, Store_None, nullptr, "advanced", "advanced", nullptr);
    closure(Knob_Checkbox, Store_Bool, &flatten, "Flatten", "Fast Start", nullptr);
    Tooltip(closure, flattenTooltip);
    closure(Knob_Float, Store_Float, &fps, "fps", "fps", nullptr);
    SetRange(closure, 0, 100);
    SetFlags(closure, Flag_WholeNumberSlider | Flag_SetByDialog);
    closure(Knob_Checkbox, Store_Bool, &useFormatAspect, "use_format_aspect", "use format aspect", nullptr);
    Tooltip(closure, aspectTooltip);
    closure(Knob_Enumeration, Store_Int, &quality, "quality", "quality", qualityEntries);
    SetFlags(closure, Flag_SetByDialog);
    closure(Knob_Int, Store_Int, &keyFrameRate, "keyframerate", "keyframe rate", nullptr);
    SetRange(closure, 0, 10);
    SetFlags(closure, Flag_SetByDialog);
}

void movWriter::declareAudioKnobs(Knob_Closure& closure) {
    closure(Knob_File, Store_CString, &audioFile, "audiofile", "audio file", nullptr);
    closure(Knob_Float, Store_Float, &audioOffset, "audio_offset", "audio offset", nullptr);
    SetRange(closure, -1000, 1000);
    Tooltip(closure, audioOffsetTooltip);
    closure(Knob_Enumeration, Store_Int, &audioOffsetUnits, "units", "units", unitEntries);
}

void movWriter::declareTimeCodeKnob(Knob_Closure& closure) {
    closure(Knob_Text, Store_String, &settings, "settings", "settings", nullptr);
    SetFlags(closure, Flag_SetByDialog);
    closure(Knob_Checkbox, Store_Bool, &writeTimeCode, "writeTimeCode", "write time code", nullptr);
    Tooltip(closure, timeCodeTooltip);
}

}  // namespace Morvane::Writer
