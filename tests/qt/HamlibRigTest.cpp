// The Hamlib adapter against Hamlib's dummy rig behind a real rigctld on a loopback port.
#include "qt/services/HamlibRig.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

using namespace zav;

namespace {

// Binds (port 0: any free one) or connects to a loopback port; the port, or 0 on failure.
int loopback(int port, bool bindIt) {
    sockaddr_in a{AF_INET, htons(static_cast<std::uint16_t>(port)), {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t len = sizeof a;
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    const bool ok = bindIt ? bind(s, reinterpret_cast<sockaddr*>(&a), len) == 0 &&
                                 getsockname(s, reinterpret_cast<sockaddr*>(&a), &len) == 0
                           : connect(s, reinterpret_cast<sockaddr*>(&a), len) == 0;
    close(s);
    return ok ? ntohs(a.sin_port) : 0;
}

// rigctld started on `port`, ended by its process id.
struct Rigctld {
    int port;
    pid_t pid = fork();
    explicit Rigctld(int atPort) : port(atPort) {
        if (pid == 0) {
            const std::string p = std::to_string(port);
            execlp("rigctld", "rigctld", "-m", "1", "-T", "127.0.0.1", "-t", p.c_str(), nullptr);
            _exit(127);
        }
        for (int i = 0; i < 100 && !loopback(port, false); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ~Rigctld() { stop(); }
    void stop() {
        if (pid > 0)
            kill(pid, SIGTERM), waitpid(pid, nullptr, 0);
        pid = -1;
    }
    // The rig's own answer, through Hamlib's command-line client.
    std::string ask(const std::string& command) const {
        const std::string line =
            "rigctl -m 2 -r 127.0.0.1:" + std::to_string(port) + " " + command + " 2>/dev/null";
        std::string out;
        char buffer[256];
        if (FILE* f = popen(line.c_str(), "r")) {
            while (fgets(buffer, sizeof buffer, f))
                out += buffer;
            pclose(f);
        }
        return out;
    }
};

} // namespace

TEST(HamlibRig, TunesARigctldInTurnAndFindsItAgainAfterItVanished) {
    const int port = loopback(0, true);
    auto daemon = std::make_unique<Rigctld>(port);
    ASSERT_TRUE(loopback(port, false)) << "rigctld did not start";
    HamlibRig rig(2, "127.0.0.1:" + std::to_string(port));
    for (const auto& [hz, mode, width] :
         {std::tuple{3500000, "USB", 2700}, {10100000, "AM", 6000}}) {
        const RigOutcome out = rig.Tune({double(hz), mode, width});
        ASSERT_TRUE(out.tuned) << out.error;
        EXPECT_EQ(daemon->ask("f") + daemon->ask("m") + daemon->ask("l AGC"),
                  std::to_string(hz) + "\n" + mode + "\n" + std::to_string(width) + "\n0\n");
    }
    const RigOutcome bogus = rig.Tune({7100000, "NOSUCHMODE", 2700});
    EXPECT_TRUE(bogus.tuned);
    EXPECT_EQ(bogus.refusals, std::vector<std::string>{"Hamlib knows no mode NOSUCHMODE"});

    daemon.reset(); // gone: an error in one line of words, not the end
    const std::string gone = rig.Tune({5300000, "USB", 2700}).error;
    EXPECT_TRUE(!gone.empty() && gone.find('\n') == std::string::npos) << gone;
    EXPECT_NE(rig.Tune({5300000, "USB", 2700}).error.find("cannot open rig model 2 at 127.0.0.1:"),
              std::string::npos);
    daemon = std::make_unique<Rigctld>(port);
    const RigOutcome again = rig.Tune({5300000, "USB", 2700});
    EXPECT_TRUE(again.tuned) << again.error;
    EXPECT_EQ(daemon->ask("f"), "5300000\n");

    std::string text;
    EXPECT_TRUE(HamlibRig::KnownModel(1, &text));
    EXPECT_NE(text.find("Dummy"), std::string::npos) << text;
    EXPECT_FALSE(HamlibRig::KnownModel(999999, &text));
    EXPECT_EQ(HamlibRig(999999, "").Tune({7000000, "USB", 2700}).error,
              "Hamlib knows no rig model 999999");
}
