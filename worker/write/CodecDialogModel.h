#pragma once

#include <atomic>

#include "worker/dialog/DialogInterface.h"
#include "worker/write/WriterSettings.h"

namespace Morvane::Worker {

/// Answers the settings dialog's questions from the codec table, the settings and libav's descriptions of its
/// options, for pictures as the host has configured them.
class CodecDialogModel : public DialogModel {
public:
    /// `ending` tells that the worker is about to end; it outlives the model.
    CodecDialogModel(const PictureSetup& pictures, bool useFormatAspect, const std::atomic<bool>& ending);

    std::vector<std::string> codecs() const override;
    DialogCodec codec(std::int32_t index) const override;
    DialogAnswer check(const DialogState& state) const override;
    std::string withValue(const DialogState& state, const std::string& key,
                          const std::string& value) const override;
    std::optional<double> bytesPerMinute(const DialogState& state) const override;
    bool isEnding() const override { return ending; }

private:
    /// The plan of `state` for pictures of that size. Throws StatusError.
    EncodingPlan planOf(const DialogState& state, std::int32_t width, std::int32_t height) const;
    EncodingPlan samplePlanOf(const DialogState& state) const;

    PictureSetup pictures;
    const bool useFormatAspect;
    const std::atomic<bool>& ending;
};

}  // namespace Morvane::Worker
