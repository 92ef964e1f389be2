#include "desktop/Mnemonics.h"

namespace Morvane::Desktop {

Mnemonics::Mnemonics(const QString& taken) {
    for (const QChar letter : taken)
        used.insert(letter.toLower());
}

QString Mnemonics::mark(const QString& label) {
    QString marked;
    bool found = false;
    for (const QChar letter : label) {
        if (!found && letter.isLetterOrNumber() && !used.contains(letter.toLower())) {
            used.insert(letter.toLower());
            marked += '&';
            found = true;
        }
        marked += letter == '&' ? QStringLiteral("&&") : QString(letter);
    }
    return marked;
}

}  // namespace Morvane::Desktop
