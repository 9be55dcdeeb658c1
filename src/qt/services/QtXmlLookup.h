#pragma once

#include "platform/XmlLookup.h"

namespace zav {

// "//name" over QDomDocument: the text of the first element of that name in document order.
class QtXmlLookup : public XmlLookup {
public:
    std::optional<std::string> FirstElementText(const std::string& xml,
                                                const std::string& name) override;
};

} // namespace zav
