#pragma once

#include <QImage>
#include <QObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>
#include <functional>
#include <optional>

namespace Corvel::Panel {

/// Frames as a movie has them: encoded by `corvel look` with the settings that the movie will have, and
/// decoded again. One at a time; of several wishes only the last one is fulfilled, once they have settled.
class Preview : public QObject {
public:
    /// A frame, or why there is none.
    using Told = std::function<void(const QImage& picture, const QString& failure)>;

    Preview(Told told, QObject* parent);
    /// Has what is being encoded end, and waits for that.
    ~Preview() override;

    /// A frame of a movie that is still to be made: `arguments` of `corvel look`, without its output.
    void encode(const QStringList& arguments);
    /// The first frame of a movie that is there.
    void open(const QString& movie);

private:
    struct Wish {
        QStringList arguments;  ///< empty: `movie` is there already
        QString movie;
    };

    void want(const Wish& wish);
    void begin();
    void make(const QStringList& arguments);
    void read(const QString& path);
    void end(const QImage& picture, const QString& failure);

    const Told told;
    QTemporaryDir folder;
    QTimer settled;
    std::optional<Wish> wish;
    bool working = false;
    QThreadPool reader;  ///< the last member: what it still runs uses the others
};

}  // namespace Corvel::Panel
