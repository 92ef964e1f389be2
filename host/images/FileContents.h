#pragma once

#include <string>
#include <vector>

#include "host/images/Picture.h"

namespace Corvel {

/// One channel of a part, as the file stores it.
struct StoredChannel {
    std::string name;
    std::string type;         ///< "half", "float", "uint", or what else the format has: "8 bits"
    bool subsampled = false;  ///< has not a sample for every pixel
};

/// One of the pictures in a file: an OpenEXR part, a page of a TIFF. Nearly all files have one.
struct FilePart {
    std::string name;     ///< empty where the file gives none
    std::string view;     ///< the stereo view that it is, empty where the file does not say
    std::string storage;  ///< "scan lines", "tiles", "deep scan lines", "deep tiles"
    bool deep = false;
    std::string compression;  ///< empty where the format has no choice
    Window display;
    Window data;
    std::vector<StoredChannel> channels;
};

/// What there is to choose from in a file of pictures. A plain value; all of it is as the file says, and so
/// not to be trusted.
struct FileContents {
    std::string format;              ///< "OpenEXR", "DPX"
    std::vector<std::string> views;  ///< of all parts, the default one first; mostly empty
    std::vector<FilePart> parts;
    /// Whether the names of channels say what they are. Where they don't, the first three are the colours.
    bool namesChannels = true;
};

/// What a channel's name says, read as OpenEXR files name channels: "R", "diffuse.R", and with views
/// "diffuse.left.R" or "left.diffuse.R".
struct ChannelName {
    std::string view;     ///< empty for a channel that belongs to all views
    std::string layer;    ///< empty outside of any layer; "light.specular" for a layer in a layer
    std::string channel;  ///< what comes after the last dot
};

/// The name of a channel of `part`. Of a part with a view, all channels are that view's; else a name without
/// dots belongs to the first view and others to the view that they name. Source: OpenEXR's conventions for
/// multi-view files.
ChannelName splitChannelName(const std::string& name, const FilePart& part,
                             const std::vector<std::string>& views);

/// What a part's channels without a layer are called as a layer: the part's name without its view's, for
/// "diffuse.left" or "left.diffuse" "diffuse". Empty in files of one part, and where only the view is left.
std::string layerOfPart(const FileContents& contents, const FilePart& part);

/// The names that a layer may be asked for by, of all parts that belong to `view` (or, for the empty text, of
/// all parts), each once, in the order of the file.
std::vector<std::string> layersOf(const FileContents& contents, const std::string& view);

}  // namespace Corvel
