#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Kex/Image/Application.h"
#include "Kex/Image/Export.h"
#include "Kex/Image/Knob.h"
#include "Kex/Image/MetaData.h"

namespace Kex::Image {

class Iop;

/// A node: it has knobs and inputs, and reports to the application. One thread at a time calls into a node.
///
/// The destructor may throw, since a node may own a process whose end can fail; so may that of everything
/// derived.
class KEX_IMAGE_API Op {
public:
    explicit Op(Application& owner);
    virtual ~Op() noexcept(false);
    Op(const Op&) = delete;
    Op& operator=(const Op&) = delete;

    /// The knob with that saved name, owned by the node; null when there is none.
    Knob* knob(const char* name) const;
    /// All knobs in the order in which they were declared.
    const std::vector<std::unique_ptr<Knob>>& knobs() const { return knobs_; }

    /// Reports a failure, printf-style; the node counts as failed from now on. Returns, so the caller decides
    /// what still can be done.
    void error(const char* format, ...) KEX_IMAGE_PRINTF(2, 3);
    /// Reports something that a person should know, printf-style. Nothing else changes.
    void warning(const char* format, ...) KEX_IMAGE_PRINTF(2, 3);
    /// Whether `error` has been called since construction or the last `clearFailure`.
    bool failed() const { return failed_; }
    void clearFailure() { failed_ = false; }

    /// Reports how much of the current frame is done, 0 to 1.
    void progressFraction(double fraction);
    /// Whether the application wants the current frame given up.
    bool aborted() const;

    /// The node connected to input n, not owned; null when nothing is.
    Iop* input(int n) const;
    /// Connects input n (from 0 up) to a node that must outlive this one, or to nothing.
    void setInput(int n, Iop* node);

    /// The metadata of the node's picture: all of it for an empty (or null) key, else only the property of
    /// that key. A node that does not override it passes on what its input 0 has.
    virtual MetaData::Bundle fetchMetaData(const char* key) const;

protected:
    Application& application() const { return application_; }
    void addKnob(std::unique_ptr<Knob> newKnob);
    void removeKnobs();

private:
    Application& application_;
    std::vector<std::unique_ptr<Knob>> knobs_;
    std::vector<Iop*> inputs;
    bool failed_ = false;
};

}  // namespace Kex::Image
