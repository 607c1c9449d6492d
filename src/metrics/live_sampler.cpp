#include "metrics/live_sampler.hpp"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "metrics/read_watch.hpp"

namespace velmora {

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
    ReadWatch watch;
    std::thread thread;
};

namespace {

struct WorkerSetup {
    LiveSampler::MakeCollector make;
    std::optional<ThermalState> seed;
    Post post;
    std::weak_ptr<LiveSampler*> owner;
    LiveSampler::Clock clock;
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
    const std::optional<ThermalState> seed = last_ ? std::optional(last_->thermal) : std::nullopt;
    WorkerSetup setup{make_, seed, post_, self_, clock_};
    worker->thread = std::thread([worker, setup = std::move(setup)] {
        ReadWatch::bind(&worker->watch);
        auto collector = setup.make();
        if (setup.seed) collector->assumeThermal(*setup.seed);
        std::string summary = collector->sensorSummary();
        std::unique_lock lock(worker->mutex);
        worker->busy = false;
        for (;;) {
            worker->wake.wait(lock, [&] { return worker->wanted || worker->stopping; });
            if (worker->stopping) return;
            worker->wanted = false;
            worker->busy = true;
            worker->busySince = setup.clock();
            lock.unlock();
            LiveDelivery delivery{collector->sample(Timestamp::now()), std::move(summary),
                                  collector->takeNotices(), collector->thermalLimits()};
            summary.clear();
            lock.lock();
            worker->busy = false;
            if (worker->stopping) return;
            if (worker->handOver) {
                worker->handOver = false;
                worker->handedOver = std::move(delivery);
                worker->handed.notify_all();
                continue;
            }
            setup.post([owner = setup.owner, delivery = std::move(delivery)] {
                if (const auto self = owner.lock()) (*self)->received(delivery);
            });
        }
    });
    worker_ = std::move(worker);
}

void LiveSampler::request() {
    Worker& worker = *worker_;
    std::unique_lock lock(worker.mutex);
    const MonoTime now = clock_();
    const auto reading = worker.watch.currentFor(now);
    const bool readHangs = reading && *reading > hangAfterSeconds;
    if (worker.busy && (readHangs || now - worker.busySince > sampleLimitSeconds)) {
        worker.stopping = true;
        const std::string path = worker.watch.current();
        lock.unlock();
        abandon(worker, path);
        return;
    }
    worker.wanted = true;
    lock.unlock();
    worker.wake.notify_one();
}

void LiveSampler::abandon(Worker& worker, const std::string& path) {
    worker.thread.detach();
    if (!path.empty()) quarantineRead(path);
    ++restarts_;
    if (log_) {
        log_("live: " + (path.empty() ? std::string("a sample") : "reading " + path) +
             " has not answered for " + std::to_string(static_cast<int>(hangAfterSeconds)) +
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
    if (now - *lastAt_ < HeatCollector::staleAfterSeconds) return last_->thermal;
    return std::nullopt;
}

}  // namespace velmora
