#include "host/render/NodeHost.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <exception>

#include "Kex/Image/Writer.h"
#include "host/images/SequencePattern.h"
#include "host/render/RenderPlan.h"

namespace Corvel {
namespace {

std::string withoutLineBreak(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

const std::string& checkedExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
    if (Kex::Image::Writer::Description::find(extension) == nullptr) {
        throw Failure(Exit::Usage, fmt::format("no plug-in writes {}; name a file that ends in .mov", path));
    }
    return path;
}

}  // namespace

NodeHost::NodeHost(const std::string& output, const Kex::Image::Format& format, int depth,
                   HelperSession& session)
    : helper_(session),
      picture_(*this),
      node_(std::make_unique<Kex::Image::Write>(static_cast<Application&>(*this), checkedExtension(output))) {
    node_->setInput(0, &picture_);
    node_->setFormat(format);
    node_->setDepth(depth);
    if (const auto images = SequencePattern::parse(output)) {
        node_->setFrameNames([images](int frame) { return images->pathOf(frame); });
    }
    helper_.start([this] { node_->createWriter(); });
}

NodeHost::~NodeHost() noexcept {
    helper_.expectEnd();
    try {
        // Not by the smart pointer's own destructor: the node's may throw.
        delete node_.release();
    } catch (const std::exception& error) {
        spdlog::warn("while stopping the QuickTime helper: {}", error.what());
    }
}

void NodeHost::error(const Kex::Image::Op&, const std::string& text) {
    spdlog::error(withoutLineBreak(text));
}

void NodeHost::warning(const Kex::Image::Op&, const std::string& text) {
    spdlog::warn(withoutLineBreak(text));
}

void NodeHost::progress(const Kex::Image::Op&, double part) {
    helper_.signOfLife();
    if (fraction) {
        fraction(part);
    }
}

bool NodeHost::aborted(const Kex::Image::Op&) {
    return helper_.interrupts().count() > 1;
}

}  // namespace Corvel
