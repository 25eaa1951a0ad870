// The sample clock's thread, and one frame of the board's time.
#include "Clock.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

#include "Families.h"

namespace vb {

namespace {
using Steady = std::chrono::steady_clock;
constexpr std::chrono::nanoseconds kFrameTime = std::chrono::milliseconds(RYN_VB_SAMPLE_CLOCK_FRAME_MS);
// A clock that fell this far behind (a stalled or overloaded host) starts
// counting afresh instead of running the missed frames in a burst.
constexpr std::chrono::milliseconds kLongestLag{200};
}  // namespace

SampleClock::SampleClock(Board &board, uint32_t rate) : board_(board), rate_(rate) {}

void SampleClock::start() {
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
}

SampleClock::~SampleClock() {
    {
        std::lock_guard<std::mutex> guard(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

uint32_t SampleClock::rate() const {
    std::lock_guard<std::mutex> guard(mutex_);
    return rate_;
}

void SampleClock::setRate(uint32_t rate) {
    {
        std::lock_guard<std::mutex> guard(mutex_);
        rate_ = rate;
    }
    wake_.notify_all();
}

uint32_t SampleClock::rateAtStart() {
    const char *text = std::getenv(RYN_VB_SAMPLE_CLOCK_ENV);
    uint32_t rate = 0;
    if (text == nullptr) return RYN_VB_SAMPLE_CLOCK_REAL_TIME;
    const char *end = text + std::strlen(text);
    const auto [at, error] = std::from_chars(text, end, rate);
    if (error != std::errc{} || at != end || at == text || rate > RYN_VB_SAMPLE_CLOCK_RATE_MAX)
        return RYN_VB_SAMPLE_CLOCK_REAL_TIME;
    return rate;
}

bool SampleClock::stillRunsAt(uint32_t rate) const {
    std::lock_guard<std::mutex> guard(mutex_);
    return !stopping_ && rate_ == rate;
}

void SampleClock::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    uint32_t running = 0;  // the rate the deadlines were counted for
    Steady::time_point due{};
    while (!stopping_) {
        if (rate_ == 0) {
            wake_.wait(lock, [this] { return stopping_ || rate_ != 0; });
            continue;
        }
        if (rate_ != running) {
            running = rate_;
            due = Steady::now();
        }
        const uint32_t counted = running;
        if (wake_.wait_until(lock, due, [&] { return stopping_ || rate_ != counted; })) continue;
        lock.unlock();
        {
            std::lock_guard<std::mutex> guard(board_.lock);
            // A request may have stopped or changed the clock while this
            // thread waited for the board: that request's word holds, and
            // the frame is not run.
            if (stillRunsAt(counted)) {
                try {
                    board_.tick();
                } catch (...) {
                    // Memory ran out in the middle of a frame: the frame is
                    // lost, the clock goes on.
                }
            }
        }
        lock.lock();
        if (rate_ != counted) continue;
        due += kFrameTime / running;
        if (Steady::now() - due > kLongestLag) due = Steady::now();
    }
}

// ---- The board's side ---------------------------------------------------------

void Board::tick() {
    ++frames_;
    runFrame(*this);
    for (const auto &object : objects_)
        if (object->family->tick != nullptr) object->family->tick(*this, *object);
    advance(kFrame * kSampleInterval);
}

uint32_t Board::clockRate() const { return clock_ != nullptr ? clock_->rate() : RYN_VB_SAMPLE_CLOCK_STOPPED; }

void Board::startClock() {
    if (clock_ != nullptr) clock_->start();
}

void Board::stopClock() { clock_.reset(); }

void Board::setClockRate(uint32_t rate) {
    if (clock_ != nullptr) clock_->setRate(rate);
}

}  // namespace vb
