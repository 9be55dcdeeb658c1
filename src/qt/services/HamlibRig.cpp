#include "qt/services/HamlibRig.h"

#include <hamlib/rig.h>

#include <mutex>

namespace zav {
namespace {

// Hamlib's words for an error code, first line only (later lines are its debug trail).
std::string words(int code) {
    const char* text = rigerror(code);
    std::string s = text ? text : "unknown error";
    if (const auto end = s.find_first_of("\r\n"); end != std::string::npos)
        s.erase(end);
    while (!s.empty() && (s.back() == ' ' || s.back() == '.'))
        s.pop_back();
    return s.empty() ? "error " + std::to_string(code) : s;
}

void quietHamlib() {
    static std::once_flag once;
    std::call_once(once, [] {
        rig_set_debug(RIG_DEBUG_NONE);
        rig_load_all_backends();
    });
}

} // namespace

HamlibRig::HamlibRig(int model, std::string port) : m_model(model), m_port(std::move(port)) {
    quietHamlib();
}

HamlibRig::~HamlibRig() {
    close();
}

bool HamlibRig::KnownModel(int model, std::string* nameOrError) {
    quietHamlib();
    const rig_caps* caps = rig_get_caps(static_cast<rig_model_t>(model));
    if (!caps) {
        if (nameOrError)
            *nameOrError = "Hamlib knows no rig model " + std::to_string(model);
        return false;
    }
    if (nameOrError)
        *nameOrError = std::string(caps->mfg_name) + " " + caps->model_name;
    return true;
}

bool HamlibRig::open(std::string* error) {
    if (m_open)
        return true;
    close();
    m_rig = rig_init(static_cast<rig_model_t>(m_model));
    if (!m_rig) {
        *error = "Hamlib knows no rig model " + std::to_string(m_model);
        return false;
    }
    if (!m_port.empty()) {
        const int code =
            rig_set_conf(m_rig, rig_token_lookup(m_rig, "rig_pathname"), m_port.c_str());
        if (code != RIG_OK) {
            *error = "the port " + m_port + " is not usable: " + words(code);
            close();
            return false;
        }
    }
    const int code = rig_open(m_rig);
    if (code != RIG_OK) {
        *error = "cannot open rig model " + std::to_string(m_model) +
                 (m_port.empty() ? std::string() : " at " + m_port) + ": " + words(code);
        close();
        return false;
    }
    m_open = true;
    return true;
}

void HamlibRig::close() {
    if (m_rig) {
        if (m_open)
            rig_close(m_rig);
        rig_cleanup(m_rig);
    }
    m_rig = nullptr;
    m_open = false;
}

RigOutcome HamlibRig::Tune(const RigTuning& tuning) {
    RigOutcome outcome;
    if (!open(&outcome.error))
        return outcome;
    int code = rig_set_freq(m_rig, RIG_VFO_CURR, tuning.frequencyHz);
    if (code != RIG_OK) {
        outcome.error = "the rig refused the frequency: " + words(code);
        close(); // opened afresh next time
        return outcome;
    }
    outcome.tuned = true;

    if (!tuning.mode.empty()) {
        const rmode_t mode = rig_parse_mode(tuning.mode.c_str());
        if (mode == RIG_MODE_NONE) {
            outcome.refusals.push_back("Hamlib knows no mode " + tuning.mode);
        } else {
            const pbwidth_t width =
                tuning.passbandHz > 0 ? tuning.passbandHz : RIG_PASSBAND_NOCHANGE;
            code = rig_set_mode(m_rig, RIG_VFO_CURR, mode, width);
            if (code != RIG_OK)
                outcome.refusals.push_back("the rig refused mode " + tuning.mode + " with a " +
                                           std::to_string(tuning.passbandHz) +
                                           " Hz passband: " + words(code));
        }
    }

    if (!rig_has_set_level(m_rig, RIG_LEVEL_AGC)) {
        outcome.refusals.push_back("the rig cannot turn AGC off: keep it off by hand");
    } else {
        value_t off;
        off.i = RIG_AGC_OFF;
        code = rig_set_level(m_rig, RIG_VFO_CURR, RIG_LEVEL_AGC, off);
        if (code != RIG_OK)
            outcome.refusals.push_back("the rig refused to turn AGC off: " + words(code));
    }
    return outcome;
}

} // namespace zav
