#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

namespace Corvel::Panel {

/// A picture as large as there is room, its pixels as wide as they are meant, over squares where it is
/// transparent.
class PictureView : public QWidget {
public:
    explicit PictureView(QWidget* parent);

    /// `pixelAspect`: width of a pixel divided by its height.
    void show(const QImage& picture, double pixelAspect);
    /// A few words in place of a picture.
    void say(const QString& words);

    QSize sizeHint() const override { return {480, 270}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect placeOfPicture() const;
    void scalePicture(const QSize& pixels);

    QImage picture;
    QPixmap scaled;  ///< the picture in the window's own pixels, so that a repaint only copies
    double aspect = 1;
    QString text;
};

}  // namespace Corvel::Panel
