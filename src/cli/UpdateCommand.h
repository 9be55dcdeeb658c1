#pragma once

#include "cli/CliIo.h"
#include "platform/HttpClient.h"
#include "platform/XmlLookup.h"

#include <string>
#include <vector>

namespace zav {

// zavcli update [--base-url URL]: runs the update check against URL (the maker's site by
// default) and prints the text the dialog's Message label shows. Exit 1 when the site did
// not answer properly.
int UpdateCommand(const std::vector<std::string>& args, CliIo& io);

// The check itself over the given adapters; `baseUrl` gets its trailing "/" if missing.
int RunUpdateCheck(const std::string& baseUrl, CliIo& io, HttpClient& http, XmlLookup& xml);

} // namespace zav
