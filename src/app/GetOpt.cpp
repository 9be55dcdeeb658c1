#include "app/GetOpt.h"

#include "platform/Number.h"
#include "platform/Version.h"

#include <algorithm>

namespace zav {

std::string GetOpt::ShowOptionError(const std::string& message) {
    if (opterr)
        m_dialogs.ShowMessage("Error: " + message, kAppTitle, MessageIcon::Critical);
    return "?";
}

std::string GetOpt::Next(const std::vector<std::string>& args, std::string_view optstring) {
    const int count = args.empty() ? 0
                                   : std::min(static_cast<int>(Number(args[0])),
                                              static_cast<int>(args.size()) - 1);
    if (optpos == 2) {
        if (optind > count || args[optind].empty() || args[optind][0] != '-')
            return "-1";
        if (args[optind] == "--") {
            ++optind;
            return "-1";
        }
    }
    const std::string& arg = args[optind];
    const char c = optpos <= static_cast<int>(arg.size()) ? arg[optpos - 1] : '\0';
    const bool atEnd = optpos + 1 > static_cast<int>(arg.size());
    // A lone "-" has no letter; an empty search text is found at the start of optstring, so
    // it passes as a flag that Main ignores.
    const std::size_t inSpec = c == '\0' ? 0 : optstring.find(c);

    if (c == ':' || inSpec == std::string_view::npos) {
        if (atEnd) {
            optpos = 2;
            ++optind;
        }
        return ShowOptionError(std::string("\"") + c + "\" is not a valid option.");
    }
    if (inSpec + 1 < optstring.size() && optstring[inSpec + 1] == ':') {
        if (!atEnd) {
            optarg = arg.substr(optpos);
            ++optind;
        } else {
            ++optind;
            if (optind > count) {
                optpos = 2;
                return ShowOptionError(std::string("\"") + c + "\" option requires an argument.");
            }
            optarg = args[optind];
            ++optind;
        }
        optpos = 2;
        return std::string(1, c);
    }
    ++optpos;
    if (optpos > static_cast<int>(arg.size())) {
        optpos = 2;
        ++optind;
    }
    optarg.clear();
    return c == '\0' ? std::string() : std::string(1, c);
}

} // namespace zav
