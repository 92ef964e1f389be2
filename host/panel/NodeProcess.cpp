#include "host/panel/NodeProcess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <utility>

namespace Corvel::Panel {

namespace {

constexpr int patienceAtEnd = 3000;  // milliseconds

}  // namespace

NodeProcess::NodeProcess(Listener told, QObject* parent) : QObject(parent), listener(std::move(told)) {}

NodeProcess::~NodeProcess() {
    if (process == nullptr) {
        return;
    }
    process->disconnect(this);
    process->closeWriteChannel();
    // A dialog that is still open goes with this process.
    if (!awaiting) {
        process->waitForFinished(patienceAtEnd);
    }
}

// The node ends with its standard input, once it has answered.
void NodeProcess::leave() {
    if (process == nullptr) {
        return;
    }
    process->disconnect(this);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    process->closeWriteChannel();
    process = nullptr;
}

void NodeProcess::start(const QString& input, const QStringList& options, const QJsonObject& knobs) {
    leave();
    answers = {};
    messages = {};
    waiting.clear();
    if (!knobs.isEmpty()) {
        waiting.append(QJsonObject{{"do", "knobs"}, {"knobs", knobs}});
        // What the input itself says counts more than what was remembered.
        waiting.append(QJsonObject{{"do", "input"}});
    }
    awaiting = true;
    process = new QProcess(this);
    connect(process, &QProcess::readyReadStandardOutput, this, [this] {
        answers.add(process->readAllStandardOutput(), [this](const QByteArray& line) { answered(line); });
    });
    connect(process, &QProcess::readyReadStandardError, this, [this] {
        messages.add(process->readAllStandardError(), [this](const QByteArray& line) {
            const Message message = messageOf(line, QJsonDocument::fromJson(line).object());
            if (!message.text.isEmpty()) {
                listener.message(message);
            }
        });
    });
    connect(process, &QProcess::finished, this, [this] {
        awaiting = false;
        waiting.clear();
        process->deleteLater();
        process = nullptr;
        listener.died();
    });
    startCorvel(*process, input.isEmpty() ? QStringList{"node"} : QStringList{"node", input} + options);
}

void NodeProcess::request(const QJsonObject& request) {
    const bool replaces = !waiting.isEmpty() && request["do"].toString() == "set" &&
                          waiting.last()["do"].toString() == "set" &&
                          waiting.last()["knob"] == request["knob"];
    if (replaces) {
        waiting.last() = request;
    } else {
        waiting.append(request);
    }
    sendNext();
}

void NodeProcess::sendNext() {
    if (awaiting || waiting.isEmpty() || process == nullptr) {
        return;
    }
    awaiting = true;
    process->write(QJsonDocument(waiting.takeFirst()).toJson(QJsonDocument::Compact) + '\n');
}

void NodeProcess::answered(const QByteArray& line) {
    awaiting = false;
    sendNext();
    // Only the last of several answers is what the person's fields are about.
    const QJsonObject state = QJsonDocument::fromJson(line).object();
    if (!awaiting || !state["error"].toString().isEmpty()) {
        listener.state(state);
    }
}

}  // namespace Corvel::Panel
