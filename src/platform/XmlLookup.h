#pragma once

#include <optional>
#include <string>

namespace zav {

// Port for the one question the program asks of an XML reply, "//name": the text of the
// first element of that name anywhere in the document. Nothing when the text is not
// well-formed XML or holds no such element.
class XmlLookup {
public:
    virtual ~XmlLookup() = default;
    virtual std::optional<std::string> FirstElementText(const std::string& xml,
                                                        const std::string& name) = 0;
};

} // namespace zav
