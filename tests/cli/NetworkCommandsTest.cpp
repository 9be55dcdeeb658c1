// zavcli update and measure --post, run in-process against an HTTP server inside the test.
#include "../qt/TestHttpServer.h"
#include "CliRun.h"

#include "cli/Commands.h"
#include "cli/MeasureCommand.h"
#include "cli/UpdateCommand.h"
#include "platform/UrlCoding.h"
#include "platform/Version.h"
#include "qt/services/QtHttpClient.h"
#include "qt/services/QtXmlLookup.h"
#include "testsupport/ScratchDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace zav;
using namespace zav::test;
namespace fs = std::filesystem;

namespace {

// An update description as the site serves it.
std::string description(const std::string& url, const std::string& version) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<update>\n  <program>ZAV</program>\n"
           "  <url>" +
           url + "</url>\n  <version>" + version + "</version>\n</update>\n";
}

// zavcli measure on the demo recordings, with the demo profile's transfer section pointing at
// `url` (written into `dir`), and `extra` options.
std::vector<std::string> demo(const fs::path& dir, const std::string& url, const std::string& user,
                              std::vector<std::string> extra) {
    const fs::path examples = fs::path(ZAV_SOURCE_DIR) / "examples";
    std::ifstream in(examples / "example.zav");
    std::ofstream out(dir / "post.zav");
    for (std::string line; std::getline(in, line);)
        out << (line.starts_with("url=")        ? "url=" + url
                : line.starts_with("username=") ? "username=" + user
                                                : line)
            << "\n";
    extra.insert(extra.begin(), {"--profile", (dir / "post.zav").string()});
    for (const char* f : {"soundcard.wav", "receiver.wav", "external.wav"})
        extra.push_back((examples / f).string());
    return extra;
}

std::string formValue(const std::string& body, const std::string& key) {
    const std::string item = "&" + key + "=";
    const auto at = ("&" + body).find(item);
    if (at == std::string::npos)
        return "<missing>";
    const std::string rest = body.substr(at + item.size() - 1);
    return rest.substr(0, rest.find('&'));
}

} // namespace

TEST(UpdateCommand, PrintsTheMessageAndFailsOnlyWhenTheSiteDoes) {
    TestHttpServer server;
    QtHttpClient http(std::chrono::seconds(5));
    QtXmlLookup xml;
    const std::string home = "http://www.zav-noise.org/zav/";
    auto check = [&](const std::string& base, int expectedExit) {
        Cli c;
        EXPECT_EQ(RunUpdateCheck(base, c.io, http, xml), expectedExit) << c.out.str();
        return c.out.str();
    };

    server.reply(200, description(home, VersionText()));
    EXPECT_EQ(check(server.url("/zavsite"), kExitOk), "Version " + VersionText() + " is current\n");
    EXPECT_EQ(server.requests.back().path, "/zavsite/Update.xml"); // the "/" was added
    const std::string newer = std::to_string(kVersionMajor + 1) + ".0.0";
    server.reply(200, description(home, newer));
    EXPECT_EQ(check(server.url("/"), kExitOk), "New version available: " + newer + "\n");

    server.reply(404, "<html>no such file</html>", "text/html");
    EXPECT_EQ(check(server.url("/"), kExitFailed),
              "Update site not responding properly. HTTP status=404\n");
    server.reply(200, "this is not XML");
    EXPECT_EQ(check(server.url("/"), kExitFailed), "Update site not responding properly.\n");
    // Anyone on a public network can answer instead: a reply nested far beyond a real one
    // (under the size cap) is refused as no description at all, and quickly.
    std::string open, close;
    for (int i = 0; i < 120000; ++i)
        open += "<a>", close += "</a>";
    server.reply(200, "<update><url>" + home + "</url><version>" + newer + "</version>" + open +
                          close + "</update>");
    EXPECT_EQ(check(server.url("/"), kExitFailed), "Update site not responding properly.\n");
    server.reply(200, description(home, newer)); // and a real one still reads
    EXPECT_EQ(check(server.url("/"), kExitOk), "New version available: " + newer + "\n");
}

TEST(MeasurePost, ReceiptAfterTheReportRefusalsAndNoAddress) {
    TestHttpServer server;
    server.reply(200, "<result><cc>0</cc><receipt>ZAV-42</receipt></result>");
    const TempDir dir;
    const std::string url = server.hostAndPath("/collect");
    Cli plain;
    ASSERT_EQ(RunMeasure(demo(dir.path, url, "*alice", {}), plain.io), kExitOk) << plain.err.str();
    const std::string report = plain.out.str();

    Cli posted;
    ASSERT_EQ(RunMeasure(demo(dir.path, url, "*alice", {"--post"}), posted.io), kExitOk)
        << posted.err.str();
    EXPECT_EQ(posted.out.str(), report + "Receipt: ZAV-42\n");
    ASSERT_EQ(server.requests.size(), 1u);
    const std::string& body = server.requests[0].body;
    EXPECT_EQ(body.rfind("Program=ZAV&Version=" + VersionText() + "&ObsTime=", 0), 0u);
    // The set-up and the account come from the profile.
    EXPECT_EQ(UrlDecode(formValue(body, "Location")), "Back garden");
    EXPECT_EQ(formValue(body, "username"), "alice");

    Cli json;
    ASSERT_EQ(RunMeasure(demo(dir.path, url, "*alice", {"--post", "--json"}), json.io), kExitOk);
    EXPECT_NE(json.out.str().find("\"transfer\":{\"Message\":\"Receipt: ZAV-42\",\"sent\":true}"),
              std::string::npos);

    server.reply(200, "<result><cc>1</cc><reason>Unknown+station</reason></result>");
    Cli refused;
    EXPECT_EQ(RunMeasure(demo(dir.path, url, "alice", {"--post"}), refused.io), kExitFailed);
    EXPECT_TRUE(refused.out.str().ends_with("\r\nUnknown station\n"));
    Cli none;
    EXPECT_EQ(RunMeasure(demo(dir.path, "", "alice", {"--post"}), none.io), kExitFailed);
    EXPECT_NE(none.err.str().find("no server address"), std::string::npos);
    EXPECT_EQ(server.requests.size(), 3u);
}
