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

// The demo recordings and profile in a scratch folder, the profile's transfer section
// pointing at `url`.
struct MeasureFolder {
    fs::path dir = fs::temp_directory_path() / ("zav-post-" + std::to_string(::getpid()));
    MeasureFolder(const std::string& url, const std::string& user) {
        fs::remove_all(dir);
        fs::create_directories(dir);
        const fs::path examples = fs::path(ZAV_SOURCE_DIR) / "examples";
        for (const char* f : {"soundcard.wav", "receiver.wav", "external.wav"})
            fs::copy_file(examples / f, dir / f);
        std::ifstream in(examples / "example.zav");
        std::ofstream out(dir / "post.zav");
        for (std::string line; std::getline(in, line);) {
            if (line.rfind("url=", 0) == 0)
                line = "url=" + url;
            else if (line.rfind("username=", 0) == 0)
                line = "username=" + user;
            out << line << "\n";
        }
    }
    ~MeasureFolder() { fs::remove_all(dir); }
    std::vector<std::string> args(std::vector<std::string> extra) const {
        std::vector<std::string> a{"--profile", (dir / "post.zav").string()};
        a.insert(a.end(), extra.begin(), extra.end());
        for (const char* f : {"soundcard.wav", "receiver.wav", "external.wav"})
            a.push_back((dir / f).string());
        return a;
    }
};

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
    MeasureFolder folder(server.hostAndPath("/collect"), "*alice");
    Cli plain;
    ASSERT_EQ(RunMeasure(folder.args({}), plain.io), kExitOk) << plain.err.str();
    const std::string report = plain.out.str();

    Cli posted;
    ASSERT_EQ(RunMeasure(folder.args({"--post"}), posted.io), kExitOk) << posted.err.str();
    EXPECT_EQ(posted.out.str(), report + "Receipt: ZAV-42\n");
    ASSERT_EQ(server.requests.size(), 1u);
    const std::string& body = server.requests[0].body;
    EXPECT_EQ(body.rfind("Program=ZAV&Version=" + VersionText() + "&ObsTime=", 0), 0u);
    // The set-up and the account come from the profile.
    EXPECT_EQ(UrlDecode(formValue(body, "Location")), "Back garden");
    EXPECT_EQ(formValue(body, "username"), "alice");

    Cli json;
    ASSERT_EQ(RunMeasure(folder.args({"--post", "--json"}), json.io), kExitOk);
    EXPECT_NE(json.out.str().find("\"transfer\":{\"Message\":\"Receipt: ZAV-42\",\"sent\":true}"),
              std::string::npos);

    server.reply(200, "<result><cc>1</cc><reason>Unknown+station</reason></result>");
    Cli refused;
    EXPECT_EQ(RunMeasure(folder.args({"--post"}), refused.io), kExitFailed);
    EXPECT_TRUE(refused.out.str().ends_with("\r\nUnknown station\n"));
    MeasureFolder noAddress("", "alice");
    Cli none;
    EXPECT_EQ(RunMeasure(noAddress.args({"--post"}), none.io), kExitFailed);
    EXPECT_NE(none.err.str().find("no server address"), std::string::npos);
    EXPECT_EQ(server.requests.size(), 3u);
}
