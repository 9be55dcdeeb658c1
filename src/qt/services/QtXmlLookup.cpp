#include "qt/services/QtXmlLookup.h"

#include <QDomDocument>
#include <QDomElement>
#include <QDomNodeList>

namespace zav {

std::optional<std::string> QtXmlLookup::FirstElementText(const std::string& xml,
                                                         const std::string& name) {
    QDomDocument document;
    if (!document.setContent(QByteArray::fromStdString(xml)))
        return std::nullopt;
    const QDomNodeList found = document.elementsByTagName(QString::fromStdString(name));
    if (found.isEmpty())
        return std::nullopt;
    return found.at(0).toElement().text().toStdString();
}

} // namespace zav
