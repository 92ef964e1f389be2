#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <functional>

#include "host/panel/CorvelProcess.h"

namespace Corvel::Panel {

/// A Write node in a process of its own (`corvel node`), so that nothing that happens to it, also a dialog
/// that is open for an hour or a helper that dies, stops the window. Requests wait for each other.
class NodeProcess : public QObject {
public:
    /// What the panel is told of the node, on its own thread.
    struct Listener {
        std::function<void(const QJsonObject& state)> state;
        std::function<void(const Message& message)> message;
        std::function<void()> died;
    };

    NodeProcess(Listener listener, QObject* parent);
    ~NodeProcess() override;

    /// Makes a new node in place of the one there is, for that input (empty for none), read as `options` say;
    /// its knobs are set to `knobs`, values by name, before what the input decides.
    void start(const QString& input, const QStringList& options, const QJsonObject& knobs);

    /// Sends the request when those before it are answered. Of several waiting values of one knob only the
    /// last one is sent.
    /// REQUIRES: isThere().
    void request(const QJsonObject& request);

    /// Whether there is a node: one was started and has not died.
    bool isThere() const { return process != nullptr; }

private:
    void leave();
    void sendNext();
    void answered(const QByteArray& line);

    const Listener listener;
    QProcess* process = nullptr;
    Lines answers;
    Lines messages;
    QList<QJsonObject> waiting;
    bool awaiting = false;
};

}  // namespace Corvel::Panel
