#include "qt/services/QtXmlLookup.h"

#include <QXmlStreamReader>

namespace zav {

std::optional<std::string> QtXmlLookup::FirstElementText(const std::string& xml,
                                                         const std::string& name) {
    // One pass of a streaming reader: time and memory grow with the reply's length only,
    // and a reply nested or crowded beyond any real one is refused before it costs anything.
    QXmlStreamReader reader(QByteArray::fromStdString(xml));
    reader.setNamespaceProcessing(false);
    const QString wanted = QString::fromStdString(name);
    std::optional<std::string> found;
    std::size_t depth = 0, elements = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement) {
            --depth;
            continue;
        }
        if (token != QXmlStreamReader::StartElement)
            continue;
        if (++depth > kMaxDepth || ++elements > kMaxElements)
            return std::nullopt;
        if (found || reader.qualifiedName() != wanted)
            continue;
        // The text of the element and of everything inside it; the children still count.
        QString text;
        const std::size_t outer = depth;
        while (!reader.atEnd() && depth >= outer) {
            const QXmlStreamReader::TokenType inner = reader.readNext();
            if (inner == QXmlStreamReader::StartElement) {
                if (++depth > kMaxDepth || ++elements > kMaxElements)
                    return std::nullopt;
            } else if (inner == QXmlStreamReader::EndElement) {
                --depth;
            } else if (inner == QXmlStreamReader::Characters ||
                       inner == QXmlStreamReader::EntityReference) {
                text += reader.text();
            }
        }
        found = text.toStdString();
    }
    // The whole reply must be well-formed, as before, even after the element was found.
    if (reader.hasError())
        return std::nullopt;
    return found;
}

} // namespace zav
