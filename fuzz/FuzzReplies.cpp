// Any server reply, through the raw reply reader and the real XML reader, into the transfer
// and the update check: whatever comes back gives a message and never a crash.
#include "platform/MemorySettingsStore.h"
#include "platform/SilentDialogs.h"
#include "qt/services/QtXmlLookup.h"
#include "qt/services/SocketPost.h"
#include "report/TransferModel.h"
#include "support/UpdateModel.h"
#include "testsupport/FakePorts.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string reply(reinterpret_cast<const char*>(data), size);
    // The same bytes as the raw reply of the transfer's own POST.
    zav::HttpResponse raw;
    if (zav::SocketPost::ParseReply(reply, size % 2 == 0, raw) && raw.body.size() > size)
        std::abort();
    zav::test::FakeHttp http;
    http.reply = {200, reply};
    zav::QtXmlLookup xml;
    zav::test::FakeMailer mailer;
    zav::test::FakeClipboard clipboard;
    zav::test::FakeShell shell;
    zav::test::FakeUpdater updater;
    zav::SilentDialogs dialogs;

    zav::UpdateModel update("http://127.0.0.1/zav/", "/opt/zav/",
                            {http, xml, updater, shell, dialogs});
    update.open();
    if (update.Message.empty())
        std::abort();

    zav::SetupRecord setup;
    zav::Observation observation;
    observation.ObsTime = "20261121093015";
    const zav::ResultGrid meas = zav::ResultGrid::MakeMeasGrid();
    const zav::ResultGrid calc = zav::ResultGrid::MakeCalcGrid();
    zav::TransferSettings settings;
    settings.URL = "127.0.0.1/collect";
    zav::TransferHistory history;
    zav::TransferModel transfer(zav::ReportSource{setup, observation, meas, calc, 0, 0, '.'},
                                settings, history, {http, xml, mailer, clipboard, dialogs});
    transfer.open();
    transfer.okPressed();
    if (transfer.Message.empty())
        std::abort();
    return 0;
}
