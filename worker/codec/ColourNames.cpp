#include "worker/codec/ColourNames.h"

#include <iterator>
#include <span>

namespace Morvane::Worker::ColourNames {

namespace {

template <typename Value>
struct Named {
    const char* name;
    Value value;
};

// The first name of a value is the one of the normalised text.
constexpr Named<AVColorPrimaries> primariesTable[] = {
    {"bt709", AVCOL_PRI_BT709},         {"bt470m", AVCOL_PRI_BT470M},       {"bt470bg", AVCOL_PRI_BT470BG},
    {"smpte170m", AVCOL_PRI_SMPTE170M}, {"smpte240m", AVCOL_PRI_SMPTE240M}, {"film", AVCOL_PRI_FILM},
    {"bt2020", AVCOL_PRI_BT2020},       {"smpte428", AVCOL_PRI_SMPTE428},   {"smpte431", AVCOL_PRI_SMPTE431},
    {"smpte432", AVCOL_PRI_SMPTE432},   {"ebu3213", AVCOL_PRI_EBU3213},     {"srgb", AVCOL_PRI_BT709},
    {"bt601", AVCOL_PRI_SMPTE170M},     {"p3-d65", AVCOL_PRI_SMPTE432},     {"p3-dci", AVCOL_PRI_SMPTE431}};

constexpr Named<AVColorTransferCharacteristic> transferTable[] = {{"bt709", AVCOL_TRC_BT709},
                                                                  {"gamma22", AVCOL_TRC_GAMMA22},
                                                                  {"gamma28", AVCOL_TRC_GAMMA28},
                                                                  {"smpte170m", AVCOL_TRC_SMPTE170M},
                                                                  {"smpte240m", AVCOL_TRC_SMPTE240M},
                                                                  {"linear", AVCOL_TRC_LINEAR},
                                                                  {"log100", AVCOL_TRC_LOG},
                                                                  {"log316", AVCOL_TRC_LOG_SQRT},
                                                                  {"iec61966-2-4", AVCOL_TRC_IEC61966_2_4},
                                                                  {"bt1361e", AVCOL_TRC_BT1361_ECG},
                                                                  {"iec61966-2-1", AVCOL_TRC_IEC61966_2_1},
                                                                  {"bt2020-10", AVCOL_TRC_BT2020_10},
                                                                  {"bt2020-12", AVCOL_TRC_BT2020_12},
                                                                  {"smpte2084", AVCOL_TRC_SMPTE2084},
                                                                  {"smpte428", AVCOL_TRC_SMPTE428},
                                                                  {"arib-std-b67", AVCOL_TRC_ARIB_STD_B67},
                                                                  {"srgb", AVCOL_TRC_IEC61966_2_1},
                                                                  {"bt601", AVCOL_TRC_SMPTE170M},
                                                                  {"pq", AVCOL_TRC_SMPTE2084},
                                                                  {"hlg", AVCOL_TRC_ARIB_STD_B67},
                                                                  {"rec709", AVCOL_TRC_BT709},
                                                                  {"bt2020", AVCOL_TRC_BT2020_10}};

/// Matrices that are one linear step; constant-luminance and ICtCp need the transfer curve too and are left
/// out.
constexpr Named<AVColorSpace> matrixTable[] = {{"bt709", AVCOL_SPC_BT709},
                                               {"fcc", AVCOL_SPC_FCC},
                                               {"bt470bg", AVCOL_SPC_BT470BG},
                                               {"smpte170m", AVCOL_SPC_SMPTE170M},
                                               {"smpte240m", AVCOL_SPC_SMPTE240M},
                                               {"bt2020nc", AVCOL_SPC_BT2020_NCL},
                                               {"gbr", AVCOL_SPC_RGB},
                                               {"rgb", AVCOL_SPC_RGB},
                                               {"bt601", AVCOL_SPC_SMPTE170M},
                                               {"bt2020", AVCOL_SPC_BT2020_NCL}};

constexpr Named<AVColorRange> rangeTable[] = {{"tv", AVCOL_RANGE_MPEG},      {"pc", AVCOL_RANGE_JPEG},
                                              {"video", AVCOL_RANGE_MPEG},   {"full", AVCOL_RANGE_JPEG},
                                              {"limited", AVCOL_RANGE_MPEG}, {"mpeg", AVCOL_RANGE_MPEG},
                                              {"jpeg", AVCOL_RANGE_JPEG}};

constexpr Named<ColourDecision> presetTable[] = {
    {"bt709", {AVCOL_PRI_BT709, AVCOL_TRC_BT709, AVCOL_SPC_BT709}},
    {"srgb", {AVCOL_PRI_BT709, AVCOL_TRC_IEC61966_2_1, AVCOL_SPC_BT709}},
    {"bt601", {AVCOL_PRI_SMPTE170M, AVCOL_TRC_SMPTE170M, AVCOL_SPC_SMPTE170M}},
    {"p3-d65", {AVCOL_PRI_SMPTE432, AVCOL_TRC_IEC61966_2_1, AVCOL_SPC_BT709}},
    {"bt2020", {AVCOL_PRI_BT2020, AVCOL_TRC_BT2020_10, AVCOL_SPC_BT2020_NCL}},
    {"pq", {AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084, AVCOL_SPC_BT2020_NCL}},
    {"hlg", {AVCOL_PRI_BT2020, AVCOL_TRC_ARIB_STD_B67, AVCOL_SPC_BT2020_NCL}}};

template <typename Value>
std::optional<Value> find(std::span<const Named<Value>> table, const std::string& name, bool numbers) {
    for (const auto& row : table) {
        if (name == row.name)
            return row.value;
        if constexpr (std::is_enum_v<Value>) {
            if (numbers && name == std::to_string(static_cast<int>(row.value)))
                return row.value;
        }
    }
    return std::nullopt;
}

template <typename Value>
std::string firstName(std::span<const Named<Value>> table, Value value) {
    for (const auto& row : table)
        if (row.value == value)
            return row.name;
    return std::to_string(static_cast<int>(value));
}

template <typename Value>
std::string allNames(std::span<const Named<Value>> table) {
    std::string names;
    for (const auto& row : table)
        names += (names.empty() ? "" : "|") + std::string(row.name);
    return names;
}

}  // namespace

std::optional<AVColorPrimaries> primaries(const std::string& name) {
    return find<AVColorPrimaries>(primariesTable, name, true);
}
std::optional<AVColorTransferCharacteristic> transfer(const std::string& name) {
    return find<AVColorTransferCharacteristic>(transferTable, name, true);
}
std::optional<AVColorSpace> matrix(const std::string& name) {
    return find<AVColorSpace>(matrixTable, name, true);
}
std::optional<AVColorRange> range(const std::string& name) {
    return find<AVColorRange>(rangeTable, name, false);
}
std::optional<ColourDecision> preset(const std::string& name) {
    return find<ColourDecision>(presetTable, name, false);
}

std::string primariesNames() {
    return allNames<AVColorPrimaries>(primariesTable);
}
std::string transferNames() {
    return allNames<AVColorTransferCharacteristic>(transferTable);
}
std::string matrixNames() {
    return allNames<AVColorSpace>(matrixTable);
}
std::string presetNames() {
    return allNames<ColourDecision>(presetTable);
}

std::string nameOf(AVColorPrimaries value) {
    return firstName<AVColorPrimaries>(primariesTable, value);
}
std::string nameOf(AVColorTransferCharacteristic value) {
    return firstName<AVColorTransferCharacteristic>(transferTable, value);
}
std::string nameOf(AVColorSpace value) {
    return firstName<AVColorSpace>(matrixTable, value);
}
std::string nameOf(AVColorRange value) {
    return firstName<AVColorRange>(rangeTable, value);
}

}  // namespace Morvane::Worker::ColourNames
