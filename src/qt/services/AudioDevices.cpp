#include "qt/services/AudioDevices.h"

#include <QMediaDevices>

namespace zav {

std::vector<std::string> AudioInputNames() {
    std::vector<std::string> names;
    for (const QAudioDevice& d : QMediaDevices::audioInputs())
        names.push_back(d.description().toStdString());
    return names;
}

std::optional<QAudioDevice> FindAudioInput(const std::string& name) {
    if (name.empty()) {
        QAudioDevice d = QMediaDevices::defaultAudioInput();
        return d.isNull() ? std::nullopt : std::optional<QAudioDevice>(d);
    }
    const QList<QAudioDevice> inputs = QMediaDevices::audioInputs();
    const QString wanted = QString::fromStdString(name);
    for (const QAudioDevice& d : inputs)
        if (d.description() == wanted)
            return d;
    for (const QAudioDevice& d : inputs)
        if (d.id() == wanted.toUtf8())
            return d;
    return std::nullopt;
}

bool AudioInputPresent(const QByteArray& id) {
    for (const QAudioDevice& d : QMediaDevices::audioInputs())
        if (d.id() == id)
            return true;
    return false;
}

} // namespace zav
