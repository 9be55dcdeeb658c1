// The Hamlib adapter against Hamlib's dummy rig behind a real rigctld on a loopback port.
#include "qt/services/HamlibRig.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace zav;

namespace {

// rigctld on `port`, ended by its process id; `ask` gets the rig's answer through rigctl.
struct Rigctld {
    int port;
    pid_t pid = fork();
    explicit Rigctld(int at) : port(at) {
        if (pid == 0)
            execlp("rigctld", "rigctld", "-m", "1", "-T", "127.0.0.1", "-t",
                   std::to_string(port).c_str(), nullptr),
                _exit(127);
        for (int i = 0; i < 100 && ask("f").empty(); ++i)
            usleep(50000);
    }
    ~Rigctld() { kill(pid, SIGTERM), waitpid(pid, nullptr, 0); }
    std::string ask(const std::string& command) const {
        std::string out, line = "rigctl -m 2 -r 127.0.0.1:" + std::to_string(port) + " " + command;
        char buffer[256];
        FILE* f = popen((line + " 2>/dev/null").c_str(), "r");
        while (f && fgets(buffer, sizeof buffer, f))
            out += buffer;
        return f && pclose(f) == 0 ? out : "";
    }
};

} // namespace

TEST(HamlibRig, TunesARigctldInTurnAndFindsItAgainAfterItVanished) {
    const int s = socket(AF_INET, SOCK_STREAM, 0); // a loopback port that was free a moment ago
    sockaddr_in a{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t n = sizeof a;
    auto* address = reinterpret_cast<sockaddr*>(&a);
    bind(s, address, n), getsockname(s, address, &n), close(s);
    const int port = ntohs(a.sin_port);
    auto daemon = std::make_unique<Rigctld>(port);
    ASSERT_EQ(daemon->ask("f"), "145000000\n") << "rigctld did not start";
    HamlibRig rig(2, "127.0.0.1:" + std::to_string(port));
    EXPECT_TRUE(rig.Tune({3500000, "USB", 2700}).tuned && rig.Tune({10100000, "AM", 6000}).tuned);
    EXPECT_EQ(daemon->ask("f m l AGC"), "10100000\nAM\n6000\n0\n"); // the last, AGC off
    EXPECT_EQ(rig.Tune({7100000, "NOSUCHMODE", 2700}).refusals,
              std::vector<std::string>{"Hamlib knows no mode NOSUCHMODE"});

    daemon.reset(); // gone: an error in one line of words, not the end
    const std::string gone = rig.Tune({5300000, "USB", 2700}).error;
    EXPECT_TRUE(!gone.empty() && gone.find('\n') == std::string::npos) << gone;
    EXPECT_EQ(rig.Tune({5300000, "USB", 2700}).error.find("cannot open rig model 2 at 127.0.0.1:"),
              0);
    daemon = std::make_unique<Rigctld>(port);
    EXPECT_TRUE(rig.Tune({5300000, "USB", 2700}).tuned);
    EXPECT_EQ(daemon->ask("f"), "5300000\n");
    EXPECT_EQ(HamlibRig(999999, "").Tune({7000000, "USB", 2700}).error,
              "Hamlib knows no rig model 999999");
}
