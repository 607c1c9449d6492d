#include "metrics/live_sampler.hpp"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "metrics/read_watch.hpp"

namespace velmora {

namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

SteadyTime nextMultiple(SteadyTime now, std::chrono::milliseconds every) {
    const auto since = now.time_since_epoch();
    const auto period = std::chrono::duration_cast<std::chrono::steady_clock::duration>(every);
    return SteadyTime((since / period + 1) * period);
}

}  // namespace

struct LiveSampler::Worker {
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable handed;
    bool wanted = false;
    bool stopping = false;
    bool busy = true;  // building the collector counts as a sample under way
    MonoTime busySince;
    bool handOver = false;
    std::optional<LiveDelivery> handedOver;
    /// Set when the thread keeps its own time.
    std::optional<std::chrono::milliseconds> every;
    int postEvery = 1;
    std::optional<ThermalState> lastPosted;

    /// Whether a finished sample goes to the loop now; the others are dropped.
    bool worthPosting(const LiveDelivery& delivery) {
        const bool changed = lastPosted != delivery.inputs.thermal;
        if (!changed && delivery.summary.empty() && delivery.notices.empty() &&
            delivery.sequence % static_cast<std::uint64_t>(std::max(1, postEvery)) != 0) {
            return false;
        }
        lastPosted = delivery.inputs.thermal;
        return true;
    }
    ReadWatch watch;
    std::thread thread;

    /// Waits for a request, or for the thread's own next sample time when it keeps one; returns
    /// early, with nothing wanted, when it is told to keep its own time.
    void waitForWork(std::unique_lock<std::mutex>& lock) {
        const auto asked = [this] { return wanted || stopping; };
        if (!every) {
            wake.wait(lock, [&] { return asked() || every.has_value(); });
            return;
        }
        const auto due = nextMultiple(std::chrono::steady_clock::now(), *every);
        if (!wake.wait_until(lock, due, asked)) wanted = true;
    }
};

namespace {

struct WorkerSetup {
    LiveSampler::MakeCollector make;
    std::optional<ThermalState> seed;
    Post post;
    std::weak_ptr<LiveSampler*> owner;
    LiveSampler::Clock clock;
    std::shared_ptr<std::atomic<std::uint64_t>> sequence;
};

}  // namespace

LiveSampler::LiveSampler(MakeCollector make, Post post, Deliver deliver, LogSink log, Clock clock)
    : make_(std::move(make)),
      post_(std::move(post)),
      deliver_(std::move(deliver)),
      log_(std::move(log)),
      clock_(std::move(clock)) {
    startWorker();
}

LiveSampler::~LiveSampler() {
    bool busy = false;
    {
        std::lock_guard lock(worker_->mutex);
        worker_->stopping = true;
        busy = worker_->busy;
    }
    worker_->wake.notify_all();
    // A thread inside a read that does not return is left to it; the process is ending.
    if (busy) {
        worker_->thread.detach();
    } else {
        worker_->thread.join();
    }
}

void LiveSampler::startWorker() {
    auto worker = std::make_shared<Worker>();
    worker->busySince = clock_();
    worker->every = every_;
    const std::optional<ThermalState> seed = last_ ? std::optional(last_->thermal) : std::nullopt;
    worker->postEvery = postEvery_;
    WorkerSetup setup{make_, seed, post_, self_, clock_, sequence_};
    worker->thread = std::thread([worker, setup = std::move(setup)] {
        ReadWatch::bind(&worker->watch);
        auto collector = setup.make();
        if (setup.seed) collector->assumeThermal(*setup.seed);
        std::string summary = collector->sensorSummary();
        std::unique_lock lock(worker->mutex);
        worker->busy = false;
        for (;;) {
            worker->waitForWork(lock);
            if (worker->stopping) return;
            if (!worker->wanted) continue;  // told to keep its own time meanwhile
            worker->wanted = false;
            worker->busy = true;
            worker->busySince = setup.clock();
            lock.unlock();
            LiveDelivery delivery{collector->sample(Timestamp::now()), std::move(summary),
                                  collector->takeNotices(), collector->thermalLimits(),
                                  ++*setup.sequence};
            summary.clear();
            lock.lock();
            worker->busy = false;
            if (worker->stopping) return;
            if (worker->handOver) {
                worker->handOver = false;
                worker->lastPosted = delivery.inputs.thermal;
                worker->handedOver = std::move(delivery);
                worker->handed.notify_all();
                continue;
            }
            if (!worker->worthPosting(delivery)) continue;
            // Posted without the lock, so that the loop, woken by it, does not wait for it.
            lock.unlock();
            setup.post([owner = setup.owner, delivery = std::move(delivery)] {
                if (const auto self = owner.lock()) (*self)->received(delivery);
            });
            lock.lock();
        }
    });
    worker_ = std::move(worker);
}

void LiveSampler::request() {
    if (replaceIfHung()) return;
    Worker& worker = *worker_;
    {
        std::lock_guard lock(worker.mutex);
        worker.wanted = true;
    }
    worker.wake.notify_one();
}

bool LiveSampler::replaceIfHung() {
    Worker& worker = *worker_;
    std::unique_lock lock(worker.mutex);
    const MonoTime now = clock_();
    const auto reading = worker.watch.currentFor(now);
    const bool readHangs = reading && *reading > hangAfter;
    if (!worker.busy || !(readHangs || now - worker.busySince > sampleLimit)) return false;
    worker.stopping = true;
    const std::string path = worker.watch.current();
    lock.unlock();
    abandon(worker, path);
    return true;
}

void LiveSampler::postEvery(int samples) {
    postEvery_ = samples;
    std::lock_guard lock(worker_->mutex);
    worker_->postEvery = samples;
}

void LiveSampler::sampleEvery(std::chrono::milliseconds interval) {
    every_ = interval;
    Worker& worker = *worker_;
    {
        std::lock_guard lock(worker.mutex);
        worker.every = interval;
    }
    worker.wake.notify_one();
}

void LiveSampler::abandon(Worker& worker, const std::string& path) {
    worker.thread.detach();
    if (!path.empty()) quarantineRead(path);
    ++restarts_;
    if (log_) {
        log_("live: " + (path.empty() ? std::string("a sample") : "reading " + path) +
             " has not answered for " + std::to_string(hangAfter.count()) +
             " s or more; it is left behind (stale) and sampling starts afresh without it");
    }
    startWorker();
    request();
}

std::optional<LiveDelivery> LiveSampler::awaitFirst(std::chrono::milliseconds limit) {
    Worker& worker = *worker_;
    std::unique_lock lock(worker.mutex);
    worker.handOver = true;
    worker.wanted = true;
    worker.wake.notify_one();
    if (!worker.handed.wait_for(lock, limit, [&] { return worker.handedOver.has_value(); })) {
        worker.handOver = false;  // it will be posted when it comes
        return std::nullopt;
    }
    LiveDelivery delivery = std::move(*worker.handedOver);
    worker.handedOver.reset();
    lock.unlock();
    last_ = delivery.inputs;
    lastAt_ = clock_();
    return delivery;
}

void LiveSampler::received(const LiveDelivery& delivery) {
    last_ = delivery.inputs;
    lastAt_ = clock_();
    if (deliver_) deliver_(delivery);
}

std::optional<ThermalState> LiveSampler::currentThermal(MonoTime now) const {
    if (!last_ || !lastAt_) return std::nullopt;
    if (now - *lastAt_ < HeatCollector::staleAfter) return last_->thermal;
    return std::nullopt;
}

}  // namespace velmora
