#pragma once

#include <cstdint>

namespace zav {

// Port for the window that shows a recording while it runs: how far it has got, the level
// of the latest audio, and a way for the operator to give up.
class CaptureProgress {
public:
    virtual ~CaptureProgress() = default;
    virtual void Begin(std::int64_t totalSamples) = 0;
    // `levelDbfs`: the latest 100 ms, dB relative to full scale (see LevelMeter).
    virtual void Update(std::int64_t samplesSoFar, double levelDbfs) = 0;
    virtual bool CancelRequested() = 0;
    virtual void End() = 0;
};

} // namespace zav
