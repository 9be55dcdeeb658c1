#pragma once

#include "report/ReportSource.h"
#include "report/TransferModel.h"
#include "testsupport/FakeDialogs.h"
#include "testsupport/FakePorts.h"

#include <string>

namespace zav::test {

// A finished observation with every grid cell the outputs copy, and no position.
struct ReportFixture {
    SetupRecord setup;
    Observation observation;
    ResultGrid gridMeas = ResultGrid::MakeMeasGrid(), gridCalc = ResultGrid::MakeCalcGrid();
    ReportFixture();
    ReportSource source() const;
};

// An expected file from tests/data, with "@VERSION@" replaced by the program's version.
std::string ExpectedFile(const std::string& name);

// A transfer of that observation through fakes, with an account and a server that accepts.
struct TransferRig {
    ReportFixture fixture;
    TransferSettings settings;
    TransferHistory history;
    FakeHttp http;
    FakeXml xml;
    FakeMailer mailer;
    FakeClipboard clipboard;
    FakeDialogs dialogs;
    ReportSource source = fixture.source();

    TransferRig() {
        settings.username = "alice", settings.password = "p&ss word";
        settings.Email = "me@example.org", settings.AtfEmail = "obs@example.org";
        settings.URL = "collect.example.org/post.php";
        http.reply = {200, "<r><cc>0</cc><receipt>R-17</receipt></r>"};
        xml.elements = {{"cc", "0"}, {"receipt", "R-17"}};
    }
    TransferModel model() {
        return {source, settings, history, {http, xml, mailer, clipboard, dialogs}};
    }
    TransferModel open() {
        TransferModel m = model();
        m.open();
        return m;
    }
};

} // namespace zav::test
