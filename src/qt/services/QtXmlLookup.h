#pragma once

#include "platform/XmlLookup.h"

#include <cstddef>

namespace zav {

// "//name" over a streaming XML reader: the text of the first element of that name in
// document order. Replies come over plain HTTP, so anyone on the path can send one: a reply
// nested deeper than kMaxDepth or holding more than kMaxElements elements is refused (no
// text), far beyond the few flat elements a real reply has.
class QtXmlLookup : public XmlLookup {
public:
    static constexpr std::size_t kMaxDepth = 64;
    static constexpr std::size_t kMaxElements = 20000;

    std::optional<std::string> FirstElementText(const std::string& xml,
                                                const std::string& name) override;
};

} // namespace zav
