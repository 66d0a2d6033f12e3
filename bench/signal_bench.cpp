// Emitting a two-argument signal against the ways a user would otherwise call listeners: a
// direct virtual call on each listener and a list of std::function. Items are delivered calls.

#include <Cordel/Util/Signals.h>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <vector>

using Cordel::Util::Object;

namespace {

class Meter : public Object {
    CORDEL_OBJECT(Meter, Object)
public:
    void levelChanged(unsigned int channel, float level) { Emit<&Meter::levelChanged>(channel, level); }
    CORDEL_SIGNALS(CORDEL_MEMBER(levelChanged, "levelChanged(uint,float)"))
};

// The same work in every peer: fold the arguments into a sum the benchmark keeps.
class Display : public Object {
    CORDEL_OBJECT(Display, Object)
public:
    float sum = 0;
    void showLevel(unsigned int channel, float level) { sum += static_cast<float>(channel) * level; }
    CORDEL_SLOTS(CORDEL_MEMBER(showLevel, "showLevel(uint,float)"))
};

struct Listener {
    virtual ~Listener() = default;
    virtual void levelChanged(unsigned int channel, float level) = 0;
};

struct DisplayListener : Listener {
    float sum = 0;
    void levelChanged(unsigned int channel, float level) override { sum += static_cast<float>(channel) * level; }
};

void emitCordel(benchmark::State& state)
{
    Meter meter;
    std::vector<std::unique_ptr<Display>> displays;
    for (int i = 0; i < state.range(0); ++i) {
        displays.push_back(std::make_unique<Display>());
        Object::Connect(&meter, "2levelChanged(uint,float)", displays.back().get(), "1showLevel(uint,float)");
    }
    unsigned int channel = 0;
    for (auto _ : state)
        meter.levelChanged(++channel & 7, 0.5f);
    for (auto const& d : displays)
        benchmark::DoNotOptimize(d->sum);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void emitVirtual(benchmark::State& state)
{
    std::vector<std::unique_ptr<DisplayListener>> owned;
    std::vector<Listener*> listeners;
    for (int i = 0; i < state.range(0); ++i) {
        owned.push_back(std::make_unique<DisplayListener>());
        listeners.push_back(owned.back().get());
    }
    benchmark::DoNotOptimize(listeners.data());
    unsigned int channel = 0;
    for (auto _ : state) {
        ++channel;
        for (Listener* l : listeners)
            l->levelChanged(channel & 7, 0.5f);
        benchmark::ClobberMemory();
    }
    for (auto const& d : owned)
        benchmark::DoNotOptimize(d->sum);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void emitFunction(benchmark::State& state)
{
    std::vector<std::unique_ptr<DisplayListener>> owned;
    std::vector<std::function<void(unsigned int, float)>> listeners;
    for (int i = 0; i < state.range(0); ++i) {
        owned.push_back(std::make_unique<DisplayListener>());
        DisplayListener* d = owned.back().get();
        listeners.emplace_back([d](unsigned int channel, float level) { d->levelChanged(channel, level); });
    }
    benchmark::DoNotOptimize(listeners.data());
    unsigned int channel = 0;
    for (auto _ : state) {
        ++channel;
        for (auto const& l : listeners)
            l(channel & 7, 0.5f);
        benchmark::ClobberMemory();
    }
    for (auto const& d : owned)
        benchmark::DoNotOptimize(d->sum);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(emitCordel)->Name("Emit2Args/Cordel")->Arg(1)->Arg(10);
BENCHMARK(emitVirtual)->Name("Emit2Args/virtual call")->Arg(1)->Arg(10);
BENCHMARK(emitFunction)->Name("Emit2Args/std::function")->Arg(1)->Arg(10);

BENCHMARK_MAIN();
