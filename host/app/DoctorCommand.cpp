#include <fmt/format.h>
#include <sys/statvfs.h>

#include <functional>

#include "Kex/Image/Writer.h"
#include "host/app/CodecFacts.h"
#include "host/app/Command.h"
#include "host/app/StartUp.h"
#include "host/images/ImageReader.h"
#include "host/render/PlugIns.h"
#include "host/render/PrivateFolder.h"
#include "host/render/ProgressText.h"
#include "host/render/Sweep.h"
#include "platform/Confinement.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "The first line is \"bundle PATH\"; each further one is a check and ends in what is wrong, if anything.\n"
    "The exit code is 0 when all is well, else 4.";

/// The checks in order; each prints one line.
class Examination {
public:
    explicit Examination(Reporter& reporter) : reporter(reporter) {}

    void line(const std::string& subject, const std::string& state) { fmt::print("{} {}\n", subject, state); }

    // A check that fails says why and counts.
    void check(const std::string& subject, const std::function<std::string()>& examine) {
        try {
            line(subject, examine());
        } catch (const std::exception& error) {
            line(subject, fmt::format("FAILED: {}", error.what()));
            healthy = false;
        }
        std::fflush(stdout);
    }

    Exit examine(const Bundle& bundle);

private:
    std::string plugInState(const PlugIn& plugIn) const;
    std::string helperAnswer() const;
    std::string memoryState() const;

    Reporter& reporter;
    bool healthy = true;
};

std::string Examination::plugInState(const PlugIn& plugIn) const {
    if (!plugIn.failure.empty()) {
        throw Failure(Exit::HelperFailed, plugIn.failure);
    }
    return "is loaded";
}

std::string Examination::helperAnswer() const {
    const std::size_t count = askForCodecs(reporter).size();
    if (count == 0) {
        throw Failure(Exit::HelperFailed, "the helper offers no codec");
    }
    return fmt::format("answers and offers {} codecs", count);
}

std::string Examination::memoryState() const {
    const PrivateFolder folder(0);
    struct statvfs state {};
    if (statvfs(folder.path().c_str(), &state) != 0) {
        throw Failure(Exit::HelperFailed, "the folder for shared memory is not there");
    }
    const auto room = static_cast<std::uint64_t>(state.f_bavail) * state.f_frsize;
    return fmt::format("has {} for frames on their way to the helper ({})", sizeText(room), folder.path());
}

Exit Examination::examine(const Bundle& bundle) {
    for (const PlugIn& plugIn : loadPlugIns(bundle.contents())) {
        check(fmt::format("plug-in {}", plugIn.path), [&] { return plugInState(plugIn); });
    }
    check("writer for .mov files", [] {
        if (Kex::Image::Writer::Description::find("mov") == nullptr) {
            throw Failure(Exit::HelperFailed, "no plug-in has registered one");
        }
        return std::string("is registered");
    });
    check(fmt::format("helper {}", bundle.helper()), [&] {
        bundle.checkHelper();
        return std::string("can be executed");
    });
    check("shared memory", [this] { return memoryState(); });
    if (healthy) {
        check("helper", [this] { return helperAnswer(); });
    }
    check("decoders of movies and sound", [] {
        return Morvane::Platform::isConfinementWanted()
                   ? "are confined: " + Morvane::Platform::confinementText()
                   : std::string("are not confined: CORVEL_HELPER_CONFINEMENT is off");
    });
    check("images", [] { return fmt::format("can be read from {}", readableFormats()); });
    return healthy ? Exit::Done : Exit::HelperFailed;
}

class DoctorCommand : public Command {
public:
    std::string name() const override { return "doctor"; }
    std::string summary() const override { return "Check the installation"; }

    void declare(CLI::App& app) override {
        app.add_flag("--sweep", sweep,
                     "Remove what runs left behind that were killed; running ones are not touched");
        app.footer(footer);
    }

    Exit run(Session& session) override {
        Examination examination(*session.reporter);
        // First, since the checks start a helper and would sweep on the way, silently.
        const Bundle bundle;
        examination.line("bundle", bundle.path());
        if (sweep) {
            for (const std::string& removed : sweepStaleObjects()) {
                examination.line("swept", removed);
            }
        }
        return examination.examine(bundle);
    }

private:
    bool sweep = false;
};

}  // namespace

std::unique_ptr<Command> doctorCommand() {
    return std::make_unique<DoctorCommand>();
}

}  // namespace Corvel
