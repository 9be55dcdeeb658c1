#include "cli/UpdateCommand.h"

#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "config/SiteAddress.h"
#include "qt/services/QtHttpClient.h"
#include "qt/services/QtUpdater.h"
#include "qt/services/QtXmlLookup.h"
#include "support/UpdateModel.h"

#include <QCoreApplication>

namespace zav {
namespace {

// Nothing is opened or started without a window: the dialog's buttons are never pressed.
struct NoShell : Shell {
    int Open(const std::string&) override { return 31; }
    bool Run(const std::string&, const std::string&) override { return false; }
};

} // namespace

int RunUpdateCheck(const std::string& baseUrl, CliIo& io, HttpClient& http, XmlLookup& xml) {
    std::string base = baseUrl;
    if (base.empty() || base.back() != '/')
        base += '/';
    CliDialogs dialogs(io.err);
    QtUpdater updater;
    NoShell shell;
    UpdateModel model(base, QCoreApplication::applicationDirPath().toStdString(),
                      {http, xml, updater, shell, dialogs});
    model.open();
    io.out << model.Message << "\n";
    return model.outcome == UpdateModel::Outcome::SiteFailed ? kExitFailed : kExitOk;
}

int UpdateCommand(const std::vector<std::string>& args, CliIo& io) {
    std::string baseUrl = kDefaultBaseUrl;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--base-url") {
            if (i + 1 >= args.size() || args[i + 1].empty())
                return UsageError(io, "update", "--base-url needs an address");
            baseUrl = args[++i];
        } else {
            return UsageError(io, "update", "unexpected argument " + args[i]);
        }
    }
    QtHttpClient http;
    QtXmlLookup xml;
    return RunUpdateCheck(baseUrl, io, http, xml);
}

} // namespace zav
