#pragma once

#include <QSet>
#include <QString>

namespace Morvane::Desktop {

/// Gives labels the letter that reaches their field with Alt: the first of the label's that no other label of
/// the window has.
class Mnemonics {
public:
    /// `taken`: letters that the window's buttons have already.
    explicit Mnemonics(const QString& taken = {});

    /// `label` with "&" before its letter; "&" of its own are shown as they are. A label for which no letter
    /// is left gets none.
    QString mark(const QString& label);

private:
    QSet<QChar> used;
};

}  // namespace Morvane::Desktop
