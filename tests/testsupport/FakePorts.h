#pragma once

#include "platform/AudioInput.h"
#include "platform/AudioOutput.h"
#include "platform/Beeper.h"
#include "platform/Clipboard.h"
#include "platform/HttpClient.h"
#include "platform/Mailer.h"
#include "platform/Shell.h"
#include "platform/SystemInfo.h"
#include "platform/Updater.h"
#include "platform/XmlLookup.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zav::test {

struct FakeHttp : HttpClient {
    struct Request {
        std::string method, url, contentType, body;
    };
    HttpResponse Get(const std::string& url) override {
        return requests.push_back({"GET", url, "", ""}), reply;
    }
    HttpResponse Post(const std::string& url, const std::string& contentType,
                      const std::string& body) override {
        requests.push_back({"POST", url, contentType, body});
        return whileWaiting ? whileWaiting(), reply : reply;
    }
    HttpResponse reply{200, ""};
    std::function<void()> whileWaiting; // runs inside a POST, as a real request's events would
    std::vector<Request> requests;
};

struct FakeXml : XmlLookup {
    std::optional<std::string> FirstElementText(const std::string&,
                                                const std::string& name) override {
        const auto it = elements.find(name);
        return it != elements.end() ? std::optional(it->second) : std::nullopt;
    }
    std::map<std::string, std::string> elements;
};

// Answers Open with the next of `results` (42, opened, when none is queued).
struct FakeShell : Shell {
    int Open(const std::string& target) override {
        opened.push_back(target);
        const int r = results.empty() ? 42 : results.front();
        return results.empty() ? r : (results.pop_front(), r);
    }
    bool Run(const std::string& program, const std::string& arguments) override {
        return ran.push_back(program + "|" + arguments), true;
    }
    std::deque<int> results;
    std::vector<std::string> opened, ran;
};

struct FakeMailer : Mailer {
    bool Send(const MailMessage& message) override { return sent.push_back(message), accepts; }
    bool accepts = true;
    std::vector<MailMessage> sent;
};

struct FakeClipboard : Clipboard {
    void SetText(const std::string& text) override { texts.push_back(text); }
    std::vector<std::string> texts;
};

struct FakeBeeper : Beeper {
    void Beep(int hz, int ms) override { beeps.emplace_back(hz, ms); }
    std::vector<std::pair<int, int>> beeps; // frequency and length of each
};

struct FakeUpdater : Updater {
    std::string InstalledVersion() override { return version; }
    std::string version;
};

struct FakeSystemInfo : SystemInfo {
    std::string ToolPath() override { return path; }
    std::string path;
};

// A desk without a sound card or a mail client; the clipboard keeps the last text.
struct NoDevices : AudioInput, AudioOutput, Beeper, Clipboard, Mailer {
    Recording RecordWave(const RecordingRequest&) override { return {}; }
    std::optional<DeviceError> PlayWave(const std::string&) override { return std::nullopt; }
    void Beep(int, int) override {}
    void SetText(const std::string& text) override { clipboard = text; }
    bool Send(const MailMessage&) override { return false; }
    std::string clipboard;
};

} // namespace zav::test
