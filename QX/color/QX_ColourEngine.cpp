// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_ColourEngine.h"

#include <atomic>
#include <memory>

namespace qx {
namespace {

std::atomic<HCL_XIFAddressProc> known_registry{nullptr};
std::atomic<const ColourEngine*> current{nullptr};
std::atomic<const ColourEngine*> all{nullptr};

/// A procedure's name and what takes its address.
struct Entry {
    const char* name;
    void (*set)(ColourEngine& engine, void* address);
};
constexpr Entry kEntries[] = {
#define X(name) \
    {#name, [](ColourEngine& engine, void* address) { engine.name = reinterpret_cast<CMX::name*>(address); }},
    QX_CMX_PROCEDURES(X)
#undef X
};

}  // namespace

const ColourEngine* load_colour_engine(HCL_XIFAddressProc registry) {
    known_registry.store(registry, std::memory_order_release);
    current.store(nullptr, std::memory_order_release);
    auto engine = std::make_unique<ColourEngine>();
    engine->generation = HCL_GetXIFGeneration();
    for (std::size_t i = std::size(kEntries); i-- > 0;) {
        void* const address = registry(kCMX_Label, kEntries[i].name);
        if (address == nullptr) throw BRVException("couldn't init CCMX");
        kEntries[i].set(*engine, address);
    }
    engine->before = all.load(std::memory_order_relaxed);
    while (!all.compare_exchange_weak(engine->before, engine.get(), std::memory_order_acq_rel)) {
    }
    const ColourEngine* const loaded = engine.release();
    current.store(loaded, std::memory_order_release);
    return loaded;
}

void unload_colour_engine() {
    current.store(nullptr, std::memory_order_release);
    for (const ColourEngine* engine = all.exchange(nullptr); engine != nullptr;) {
        const std::unique_ptr<const ColourEngine> last(std::exchange(engine, engine->before));
    }
}

const ColourEngine* colour_engine() noexcept {
    const ColourEngine* engine = current.load(std::memory_order_acquire);
    if (engine != nullptr && engine->generation == HCL_GetXIFGeneration()) return engine;
    const HCL_XIFAddressProc registry = known_registry.load(std::memory_order_acquire);
    if (registry == nullptr) return nullptr;
    try {
        return load_colour_engine(registry);  // another thread may be loading too, and have cleared the pointer
    } catch (const std::exception&) {
        return nullptr;
    }
}

}  // namespace qx
