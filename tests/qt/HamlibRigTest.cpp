#include "qt/services/HamlibRig.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

using namespace zav;

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    a.sin_port = htons(static_cast<std::uint16_t>(port));
    return a;
}

int freeLoopbackPort() {
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a = loopback(0);
    socklen_t len = sizeof a;
    bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a);
    getsockname(s, reinterpret_cast<sockaddr*>(&a), &len);
    close(s);
    return ntohs(a.sin_port);
}

bool accepting(int port) {
    const int s = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in a = loopback(port);
    const bool ok = connect(s, reinterpret_cast<const sockaddr*>(&a), sizeof a) == 0;
    close(s);
    return ok;
}

// Hamlib's dummy rig behind rigctld on a loopback port, ended by its process id.
struct Rigctld {
    pid_t pid = -1;
    int port = 0;
    explicit Rigctld(int atPort = 0) {
        port = atPort ? atPort : freeLoopbackPort();
        pid = fork();
        if (pid == 0) {
            const std::string p = std::to_string(port);
            execlp("rigctld", "rigctld", "-m", "1", "-T", "127.0.0.1", "-t", p.c_str(),
                   static_cast<char*>(nullptr));
            _exit(127);
        }
        for (int i = 0; i < 100 && !accepting(port); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ~Rigctld() { stop(); }
    void stop() {
        if (pid > 0) {
            kill(pid, SIGTERM);
            waitpid(pid, nullptr, 0);
        }
        pid = -1;
    }
    std::string address() const { return "127.0.0.1:" + std::to_string(port); }
    // The rig's own answer, through Hamlib's command-line client.
    std::string ask(const std::string& command) const {
        const std::string line = "rigctl -m 2 -r " + address() + " " + command + " 2>/dev/null";
        std::string out;
        if (FILE* f = popen(line.c_str(), "r")) {
            char buffer[256];
            while (fgets(buffer, sizeof buffer, f))
                out += buffer;
            pclose(f);
        }
        return out;
    }
};

TEST(HamlibRig, TunesARigctldInTurnAndFindsItAgainAfterItVanished) {
    Rigctld daemon;
    ASSERT_TRUE(accepting(daemon.port)) << "rigctld did not start";
    HamlibRig rig(2, daemon.address());
    for (const auto& [hz, mode, width] :
         {std::tuple{3500000, "USB", 2700}, {10100000, "AM", 6000}}) {
        const RigOutcome out = rig.Tune({double(hz), mode, width});
        ASSERT_TRUE(out.tuned) << out.error;
        EXPECT_EQ(daemon.ask("f") + daemon.ask("m") + daemon.ask("l AGC"),
                  std::to_string(hz) + "\n" + mode + "\n" + std::to_string(width) + "\n0\n");
    }
    const RigOutcome bogus = rig.Tune({7100000, "NOSUCHMODE", 2700});
    EXPECT_TRUE(bogus.tuned);
    EXPECT_EQ(bogus.refusals, std::vector<std::string>{"Hamlib knows no mode NOSUCHMODE"});

    // Gone: an error in one line of words, not the end.
    const int port = daemon.port;
    daemon.stop();
    const RigOutcome gone = rig.Tune({5300000, "USB", 2700});
    EXPECT_FALSE(gone.tuned);
    EXPECT_EQ(gone.error.find('\n'), std::string::npos);
    const RigOutcome stillGone = rig.Tune({5300000, "USB", 2700});
    EXPECT_NE(stillGone.error.find("cannot open rig model 2 at 127.0.0.1:"), std::string::npos);
    Rigctld back(port);
    ASSERT_TRUE(accepting(port));
    const RigOutcome again = rig.Tune({5300000, "USB", 2700});
    EXPECT_TRUE(again.tuned) << again.error;
    EXPECT_EQ(back.ask("f"), "5300000\n");
}

TEST(HamlibRig, KnowsItsModels) {
    std::string text;
    EXPECT_TRUE(HamlibRig::KnownModel(1, &text));
    EXPECT_NE(text.find("Dummy"), std::string::npos) << text;
    EXPECT_FALSE(HamlibRig::KnownModel(999999, &text));
    EXPECT_EQ(text, "Hamlib knows no rig model 999999");
    EXPECT_EQ(HamlibRig(999999, "").Tune({7000000, "USB", 2700}).error, text);
}

} // namespace
