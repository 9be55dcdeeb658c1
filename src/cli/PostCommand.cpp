#include "cli/PostCommand.h"

#include "app/MainModel.h"
#include "cli/CliDialogs.h"
#include "cli/Commands.h"
#include "qt/services/QtHttpClient.h"
#include "qt/services/QtXmlLookup.h"
#include "report/TransferModel.h"

namespace zav {
namespace {

// No mail program and no clipboard without a window: the e-mail variant reports the failed
// hand-off as the dialog does.
struct NoDesktop : Mailer, Clipboard {
    bool Send(const MailMessage&) override { return false; }
    void SetText(const std::string&) override {}
};

} // namespace

PostOutcome PostObservation(MainModel& model, CliIo& io, HttpClient& http, XmlLookup& xml) {
    if (!model.commands.transferEnabled) {
        io.err << "zavcli measure: no results to transfer\n";
        return {kExitFailed, ""};
    }
    CliDialogs dialogs(io.err);
    NoDesktop desktop;
    TransferHistory history;
    const ReportSource source = model.reportSource();
    TransferModel transfer(source, model.state.transfer, history,
                           {http, xml, desktop, desktop, dialogs});
    transfer.open();
    if (!transfer.okVisible) {
        io.err << "zavcli measure: the profile's transfer section names no "
               << (transfer.sendOnline ? "server address (url)" : "collecting address") << "\n";
        return {kExitFailed, transfer.Message};
    }
    transfer.okPressed();
    const bool sent =
        !history.lastObsTime.empty() && history.lastObsTime == source.observation.ObsTime;
    return {sent ? kExitOk : kExitFailed, transfer.Message};
}

PostOutcome PostObservation(MainModel& model, CliIo& io) {
    QtHttpClient http;
    QtXmlLookup xml;
    return PostObservation(model, io, http, xml);
}

} // namespace zav
