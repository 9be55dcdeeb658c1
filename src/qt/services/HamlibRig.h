#pragma once

#include "platform/RigControl.h"

#include <string>

struct s_rig;

namespace zav {

// Any receiver Hamlib can tune: a rig model number and its port (a serial device, or
// "host:port" for model 2, a rigctld over the network). The connection opens at the first
// tuning and again after any failure, so that a rig switched off for a while is found again.
class HamlibRig : public RigControl {
public:
    HamlibRig(int model, std::string port);
    ~HamlibRig() override;
    HamlibRig(const HamlibRig&) = delete;
    HamlibRig& operator=(const HamlibRig&) = delete;

    RigOutcome Tune(const RigTuning& tuning) override;

    // Whether Hamlib knows the model; its name, or why not.
    static bool KnownModel(int model, std::string* nameOrError);

private:
    bool open(std::string* error);
    void close();

    int m_model;
    std::string m_port;
    s_rig* m_rig = nullptr;
    bool m_open = false;
};

} // namespace zav
