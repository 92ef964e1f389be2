#include "host/panel/RenderProcess.h"

#include <QJsonDocument>
#include <csignal>
#include <utility>

namespace Corvel::Panel {

namespace {

constexpr int helperFailed = 4;  // what corvel answers when its own helper is gone

}  // namespace

RenderProcess::RenderProcess(Listener told, QObject* parent) : QObject(parent), listener(std::move(told)) {}

// The movie so far is kept: who closes the window has not asked for less.
RenderProcess::~RenderProcess() {
    if (process != nullptr) {
        process->disconnect(this);
        cancel();
        process->waitForFinished(-1);
    }
}

void RenderProcess::start(const QStringList& arguments) {
    lines = {};
    movie.clear();
    process = new QProcess(this);
    connect(process, &QProcess::readyReadStandardError, this, [this] {
        lines.add(process->readAllStandardError(), [this](const QByteArray& line) { heard(line); });
    });
    connect(process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus how) {
        process->deleteLater();
        process = nullptr;
        listener.end(how == QProcess::NormalExit ? code : helperFailed, movie);
    });
    startCorvel(*process, QStringList{"render"} + arguments + QStringList{"--progress", "json"});
}

void RenderProcess::cancel() {
    if (process != nullptr && process->processId() > 0) {
        // Not SIGINT: what a shell starts in the background ignores it, and so do its children.
        kill(static_cast<pid_t>(process->processId()), SIGTERM);
    }
}

void RenderProcess::heard(const QByteArray& line) {
    const QJsonObject event = QJsonDocument::fromJson(line).object();
    const QString kind = event["event"].toString();
    if (kind == "frame") {
        listener.progress(event);
    } else if (kind == "end") {
        movie = event["output"].toString();
    } else if (const Message message = messageOf(line, event); !message.text.isEmpty()) {
        listener.message(message);
    }
}

}  // namespace Corvel::Panel
