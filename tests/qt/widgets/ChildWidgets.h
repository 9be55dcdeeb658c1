#pragma once

#include <QLabel>
#include <QLineEdit>

#include <string>

namespace zav::test {

// A window's child by its object name; null when there is none of that type.
template <class W = QWidget> W* child(const QWidget& parent, const char* name) {
    return parent.findChild<W*>(QString::fromLatin1(name));
}

// What a named box, or else a named label, shows.
inline std::string text(const QWidget& parent, const char* name) {
    if (auto* box = child<QLineEdit>(parent, name))
        return box->text().toStdString();
    return child<QLabel>(parent, name)->text().toStdString();
}

} // namespace zav::test
