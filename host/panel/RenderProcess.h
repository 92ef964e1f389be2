#pragma once

#include <QJsonObject>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <functional>

#include "host/panel/CorvelProcess.h"

namespace Corvel::Panel {

/// One render at a time, by `corvel render`.
class RenderProcess : public QObject {
public:
    struct Listener {
        std::function<void(const QJsonObject& event)> progress;  ///< a "frame" event
        std::function<void(const Message& message)> message;
        /// The exit code of corvel and the movie that is there; empty where there is none.
        std::function<void(int exit, const QString& movie)> end;
    };

    RenderProcess(Listener listener, QObject* parent);
    ~RenderProcess() override;

    bool isRunning() const { return process != nullptr; }
    /// REQUIRES: none is running.
    void start(const QStringList& arguments);
    /// Lets the running frame end and keeps the movie so far; the second time gives the frame up, the third
    /// everything.
    void cancel();

private:
    void heard(const QByteArray& line);

    const Listener listener;
    QProcess* process = nullptr;
    Lines lines;
    QString movie;
};

}  // namespace Corvel::Panel
