#include "qt/services/AudioDevices.h"

#include <QMediaDevices>

#ifdef ZAV_HAVE_PULSE
#include <pulse/pulseaudio.h>
#include <unistd.h>

#include <chrono>
#include <map>
#endif

namespace zav {

std::vector<std::string> AudioInputNames() {
    std::vector<std::string> names;
    for (const QAudioDevice& d : QMediaDevices::audioInputs())
        names.push_back(d.description().toStdString());
    return names;
}

std::optional<QAudioDevice> FindAudioInput(const std::string& name) {
    if (name.empty()) {
        QAudioDevice d = QMediaDevices::defaultAudioInput();
        return d.isNull() ? std::nullopt : std::optional<QAudioDevice>(d);
    }
    const QList<QAudioDevice> inputs = QMediaDevices::audioInputs();
    const QString wanted = QString::fromStdString(name);
    for (const QAudioDevice& d : inputs)
        if (d.description() == wanted)
            return d;
    for (const QAudioDevice& d : inputs)
        if (d.id() == wanted.toUtf8())
            return d;
    return std::nullopt;
}

bool AudioInputPresent(const QByteArray& id) {
    for (const QAudioDevice& d : QMediaDevices::audioInputs())
        if (d.id() == id)
            return true;
    return false;
}

#ifdef ZAV_HAVE_PULSE
namespace {

// One question to the server, asked on a connection of its own and given up after a second:
// the recording streams of this process, and the names of the sources they read from.
struct PulseQuery {
    pa_mainloop* loop = pa_mainloop_new();
    pa_context* context = nullptr;
    std::vector<std::uint32_t> sources; // of this process's streams
    std::map<std::uint32_t, std::string> names;
    int pending = 0;
    bool failed = false;

    ~PulseQuery() {
        if (context) {
            pa_context_disconnect(context);
            pa_context_unref(context);
        }
        pa_mainloop_free(loop);
    }
    // Runs the loop until `done` or the second is up.
    template <typename Done> bool runUntil(Done done) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (!done() && !failed) {
            if (std::chrono::steady_clock::now() > end || pa_mainloop_prepare(loop, 20000) < 0 ||
                pa_mainloop_poll(loop) < 0 || pa_mainloop_dispatch(loop) < 0)
                return false;
        }
        return !failed;
    }
};

} // namespace

std::optional<std::vector<std::string>> InputsRecordedNow() {
    PulseQuery q;
    q.context = pa_context_new(pa_mainloop_get_api(q.loop), "ZAV input check");
    if (!q.context || pa_context_connect(q.context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return std::nullopt;
    auto state = [&] { return pa_context_get_state(q.context); };
    if (!q.runUntil([&] { return state() == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state()); }) ||
        state() != PA_CONTEXT_READY)
        return std::nullopt;

    // A server that goes away between the two steps gives no operation: that is no answer.
    auto keep = [&q](pa_operation* op) { op ? pa_operation_unref(op) : void(q.failed = true); };
    q.pending = 2;
    keep(pa_context_get_source_output_info_list(
        q.context,
        [](pa_context*, const pa_source_output_info* info, int eol, void* data) {
            auto& q = *static_cast<PulseQuery*>(data);
            if (eol)
                return void(eol < 0 ? q.failed = true : --q.pending);
            const char* pid = pa_proplist_gets(info->proplist, PA_PROP_APPLICATION_PROCESS_ID);
            if (pid && std::to_string(getpid()) == pid)
                q.sources.push_back(info->source);
        },
        &q));
    keep(pa_context_get_source_info_list(
        q.context,
        [](pa_context*, const pa_source_info* info, int eol, void* data) {
            auto& q = *static_cast<PulseQuery*>(data);
            if (eol)
                return void(eol < 0 ? q.failed = true : --q.pending);
            q.names[info->index] = info->name;
        },
        &q));
    if (!q.runUntil([&] { return q.pending == 0; }))
        return std::nullopt;
    std::vector<std::string> inputs;
    for (std::uint32_t index : q.sources)
        inputs.push_back(q.names.count(index) ? q.names[index] : std::string());
    return inputs;
}
#else
std::optional<std::vector<std::string>> InputsRecordedNow() {
    return std::nullopt;
}
#endif

} // namespace zav
