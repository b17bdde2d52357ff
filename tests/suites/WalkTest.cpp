// SPDX-License-Identifier: Apache-2.0
// Walks slots, block, selectors and suites, and calls each routine that they lead to: with a record that it must
// refuse, or, where it refuses nothing (samplers, rows, colour models, mathematics), with one that it takes.
#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_CallbackRoutines.h"
#include "QX/suites/QX_Handles.h"
#include "QX/suites/QX_SuiteRoutines.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

/// How a routine is called, by its type. Most are handed nothing at all.
template <class Fn> struct Try;
template <class... A> struct Try<int(A...)> {
    static int call(int (*fn)(A...)) { return fn(A{}...); }
};
template <> struct Try<int(...)> {
    static int call(int (*fn)(...)) { return fn(nullptr, 0, nullptr); }
};
template <class P> struct Sampled {
    TestWorld<P> world{4, 4, FillKind::random, 1};
    QX_SampPB params{1 << 16, 1 << 16, 4, world.record(), 0, {}};
    P out[8]{};
    double weights[4]{1, 0, 0, 0};
    std::int32_t places[8]{};
};
template <class P> struct Try<int(void*, std::int32_t, std::int32_t, const QX_SampPB*, P*)> {
    static int call(qx::PointSamplerFn<P>* fn) {
        Sampled<P> s;
        return fn(nullptr, 1 << 16, 1 << 16, &s.params, s.out);
    }
};
template <class P> struct Try<int(void*, std::int32_t, std::int32_t, const QX_SampPB*, bool*, P*)> {
    static int call(qx::PlusSamplerFn<P>* fn) {
        Sampled<P> s;
        bool all_in = false;
        return fn(nullptr, 1 << 16, 1 << 16, &s.params, &all_in, s.out);
    }
};
template <class P> struct Try<int(void*, std::int32_t, std::int32_t, const double*, const QX_SampPB*, P*)> {
    static int call(qx::TranslateSamplerFn<P>* fn) {
        Sampled<P> s;
        return fn(nullptr, 1 << 16, 1 << 16, s.weights, &s.params, s.out);
    }
};
template <class P, class Sum>
struct Try<int(void*, std::int32_t, std::int32_t, std::int32_t, const QX_SampPB*, Sum*, P*)> {
    static int call(qx::SpanSamplerFn<P>* fn) {
        Sampled<P> s;
        Sum sum{};
        return fn(nullptr, 2, 1 << 16, 1 << 16, &s.params, &sum, s.out);
    }
};
template <> struct Try<qx::FourSamplesFn> {
    static int call(qx::FourSamplesFn* fn) {
        Sampled<QX_Pixel8> s;
        return fn(nullptr, s.places, &s.params, s.out);
    }
};
template <> struct Try<qx::FourTranslateSamplesFn> {
    static int call(qx::FourTranslateSamplesFn* fn) {
        Sampled<QX_Pixel8> s;
        return fn(nullptr, s.places, s.weights, &s.params, s.out);
    }
};
template <> struct Try<qx::SampleWeightFn> {
    static int call(qx::SampleWeightFn* fn) {
        double weights[4];
        return fn(1, 2, weights);
    }
};
template <class S> struct Try<int(int, std::int32_t, std::int32_t, std::int32_t, std::int32_t, S*, S*)> {
    static int call(qx::UnoScanFn<S>* fn) { return fn(0, 4, 0, 4, 1 << 16, nullptr, nullptr); }
};
template <class P> struct Try<int(int, QX_RowFunc<P>*)> {
    static int call(qx::RowLookupFn<P>* fn) {
        QX_RowFunc<P> row = nullptr;
        return fn(99, &row);
    }
};
template <class P, class C>
struct Try<int(std::int32_t, const QX_BlendModeDescriptor<P>*, const P*, const P*, P*, C*)> {
    static int call(qx::RowDriverFn<P>* fn) {
        const QX_BlendModeDescriptor<P> over(QX_BlendingMode<P>(mode_of(xfer_over)), false, nullptr);
        P src{}, dst{};
        C alpha{};
        return fn(1, &over, &src, nullptr, &dst, &alpha);
    }
};
template <class P> struct Try<int(void*, const P*, std::int32_t*)> {
    static int call(int (*fn)(void*, const P*, std::int32_t*)) {
        const P pixel{};
        std::int32_t model[3];
        return fn(nullptr, &pixel, model);
    }
};
template <> struct Try<int(void*, const QX_PixelFloat*, float*)> {
    static int call(int (*fn)(void*, const QX_PixelFloat*, float*)) {
        const QX_PixelFloat pixel{};
        float value = 0;
        return fn(nullptr, &pixel, &value);
    }
};
template <class P> struct Try<int(void*, const std::int32_t*, P*)> {
    static int call(int (*fn)(void*, const std::int32_t*, P*)) {
        const std::int32_t model[3]{};
        P pixel{};
        return fn(nullptr, model, &pixel);
    }
};
template <> struct Try<decltype(QX_GetPixelData8)> {
    static int call(decltype(QX_GetPixelData8)* fn) {
        void* out = nullptr;
        return fn(nullptr, nullptr, &out);
    }
};
template <> struct Try<decltype(QX_GetPixelDataFloatGPU)> {
    static int call(decltype(QX_GetPixelDataFloatGPU)* fn) {
        void* out = nullptr;
        return fn(nullptr, &out);
    }
};
/// Those that give no code.
template <> struct Try<double(double)> {
    static int call(double (*fn)(double)) { return std::isfinite(fn(0.5)) ? 0 : 1; }
};
template <> struct Try<double(double, double)> {
    static int call(double (*fn)(double, double)) { return std::isfinite(fn(0.5, 0.25)) ? 0 : 1; }
};
template <> struct Try<int(char*, const char*, ...)> {
    static int call(int (*fn)(char*, const char*, ...)) {
        char text[8];
        return fn(text, "%d", 7) - 1;
    }
};
template <> struct Try<char*(char*, const char*)> {
    static int call(char* (*fn)(char*, const char*)) {
        char text[8];
        return fn(text, "copied") == text ? 0 : 1;
    }
};
template <> struct Try<decltype(QX_AppCallback)> {
    static int call(decltype(QX_AppCallback)* fn) { return fn(nullptr, 0, nullptr); }
};
template <> struct Try<decltype(qx::new_handle)> {
    static int call(decltype(qx::new_handle)* fn) {
        const TK_Handle handle = fn(8);
        TK_FreeHandle(handle);
        return handle != nullptr ? 0 : 1;
    }
};
template <> struct Try<decltype(qx::lock_handle)> {
    static int call(decltype(qx::lock_handle)* fn) { return fn(nullptr) == nullptr ? 0 : 1; }
};
template <> struct Try<decltype(qx::unlock_handle)> {
    static int call(decltype(qx::unlock_handle)* fn) { return fn(nullptr), 0; }
};
template <> struct Try<decltype(qx::handle_size)> {
    static int call(decltype(qx::handle_size)* fn) { return static_cast<int>(fn(nullptr)); }
};

class Walk : public testing::Test {
protected:
    struct Call {
        std::string name;
        std::function<int()> call;
        int code;
    };
    Born born{4};
    QX_CallbackBlock block{};
    std::map<void*, Call> calls;
    std::map<void*, std::string> reached;

    Walk() {
        standalone::ForgetSuites();
        EXPECT_EQ(QX_InstallSuites(), 0);
        QX_GetCallbackBlock(1, 1, &block);
    }
    ~Walk() override { standalone::ForgetSuites(); }

    /// @param code  3 and above with a report, but for a resize
    template <class Fn> void expect(const std::string& name, void* address, int code) {
        const auto fn = reinterpret_cast<Fn*>(address);
        calls[address] = {name, [fn] { return Try<Fn>::call(fn); }, code};
    }
    template <class Fn> void expect(const std::string& name, Fn* routine, int code) {
        expect<Fn>(name, reinterpret_cast<void*>(routine), code);
    }
    void reach(const std::string& name, void* address) {
        if (address != nullptr) reached.emplace(address, name);
    }

    /// Every slot, by its type.
    void expect_slots() {
        using namespace qx;
#define X(number, name, type)                                                          \
    if constexpr (!std::is_same_v<type, NoRoutine>) {                                  \
        expect<type>("slot " #number, slot_address(Slot::name), code_of_slot(number)); \
    }
        QX_SLOTS(X)
#undef X
    }
    static int code_of_slot(int i) {
        if (i == 26 || i == 27 || (i >= 94 && i <= 105))
            return 5;  // fast blurs, and row lookups of a mode that is none
        if (i == 45 || i == 46) return 516;
        const bool copies_or_draws =
            (i >= 7 && i <= 10) || (i >= 23 && i <= 32) || (i >= 42 && i <= 55) || i == 92 || i == 93;
        return copies_or_draws ? 3 : 0;
    }

    void expect_private_routines() {
        const auto field = [&](int i) { return block.fields[i]; };
        expect<int(...)>("batch", field(kQX_CB_batch_sample), 3);
        expect("fill", &QX_Fill, 3);
        expect("fill16", &QX_Fill16, 3);
        expect("fill float", &QX_FillFloat, 3);
        expect("gaussian kernel", &QX_GaussianKernel, 3);
        expect("gaussian value", &QXp_GaussianValue, 0);
        expect("premul", &QX_Premul, 3);
        expect("premul colour", &QX_PremulColor, 3);
        expect("premul colour16", &QX_PremulColor16, 3);
        expect("premul colour float", &QX_PremulColorFloat, 3);
        expect("blend", &QX_Blend_Straight, 3);
        expect("blend premul", &QX_Blend_Premul, 3);
        expect("extract planes", &QX_ExtractPlanes, 3);
        expect("insert planes", &QX_InsertPlanes, 3);
        expect("paint", &QX_PaintSpot, 3);
        expect("pixels8", &QX_GetPixelData8, 516);
        expect("pixels16", &QX_GetPixelData16, 516);
        expect("pixels float", &QX_GetPixelDataFloat, 516);
        expect("pixels gpu", &QX_GetPixelDataFloatGPU, 516);
        expect("address", &QX_GetCallbackAddr, 3);
        expect("app", &QX_AppCallback, 0);
        expect("nearest float", &QX_NNSampleFloat, 0);
        expect("bilinear float", &QX_SubpixelBilinearFloat, 0);
        expect("area float", &QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>, 0);
        expect<decltype(qx::new_world_callback)>("new world", field(kQX_CB_new_world), 3);
        expect<decltype(qx::dispose_world_callback)>("dispose world", field(kQX_CB_dispose_world), 3);
        expect<decltype(qx::transfer_rect_callback)>("transfer", field(kQX_CB_transfer_rect), 3);
        expect<decltype(qx::transform_world_callback)>("transform", field(kQX_CB_transform_world), 3);
        expect<decltype(qx::platform_data_callback)>("platform data", field(kQX_CB_get_platform_data), 516);
        expect<decltype(qx::new_handle)>("new handle", field(kQX_CB_host_new_handle), 0);
        expect<decltype(qx::lock_handle)>("lock handle", field(kQX_CB_host_lock_handle), 0);
        expect<decltype(qx::unlock_handle)>("unlock handle", field(kQX_CB_host_unlock_handle), 0);
        expect<decltype(qx::dispose_handle)>("dispose handle", field(kQX_CB_host_dispose_handle), 0);
        expect<decltype(qx::handle_size)>("handle size", field(kQX_CB_host_get_handle_size), 0);
        expect<decltype(qx::resize_handle)>("resize handle", field(kQX_CB_host_resize_handle), 516);
        for (const int i : {0, 2, 3, 4, 5, 6, 9, 10, 12, 13, 14, 17, 18})
            expect<double(double)>("unary", field(26 + i), 0);
        for (const int i : {1, 7, 8, 11}) expect<double(double, double)>("binary", field(26 + i), 0);
        expect<int(char*, const char*, ...)>("sprintf", field(26 + 15), 0);
        expect<char*(char*, const char*)>("strcpy", field(26 + 16), 0);
        const auto suites = standalone::RegisteredSuites();
        const auto entry = [&](std::size_t suite, int i) {
            return const_cast<void*>(static_cast<const void* const*>(suites[suite].table)[i]);
        };
        for (int i = 0; i < 4; ++i) expect<decltype(qx::processor_flag0)>("flag", entry(0, i), 516);
        expect<decltype(qx::new_world_by_format)>("new world 2", entry(18, 0), 3);
        expect<decltype(qx::pixel_format_of_world)>("format", entry(18, 2), 3);
    }
#define COLOURS(Form)                             \
    expect("HLS", &QX_RGBtoHLS_##Form, 0);        \
    expect("RGB", &QX_HLStoRGB_##Form, 0);        \
    expect("YIQ", &QX_RGBtoYIQ_##Form, 0);        \
    expect("RGB", &QX_YIQtoRGB_##Form, 0);        \
    expect("luminance", &QX_Luminance_##Form, 0); \
    expect("hue", &QX_Hue_##Form, 0);             \
    expect("lightness", &QX_Lightness_##Form, 0); \
    expect("saturation", &QX_Saturation_##Form, 0);
    void expect_colour_models() { COLOURS(Straight) COLOURS(Straight16) COLOURS(StraightFloat) COLOURS(Premul) }

    void reach_all() {
        for (const auto& [quality, flags] : each(std::array{0, 1}, std::array<unsigned char, 2>{0, 1})) {
            QX_CallbackBlock one;
            QX_GetCallbackBlock(quality, flags, &one);
            for (int i = 0; i < 69; ++i) reach("field " + std::to_string(i), one.fields[i]);
            for (int selector = -20; selector <= 110; ++selector) {
                void* out = nullptr;
                QX_GetCallbackAddr(nullptr, quality, flags, selector, &out);
                reach("selector " + std::to_string(selector), out);
            }
        }
        for (int i = 0; i < kQX_SlotCount; ++i) reach("slot " + std::to_string(i), QXp_G_OverFuncs[i]);
        for (const auto& suite : standalone::RegisteredSuites()) {
            const auto* table = static_cast<void* const*>(suite.table);
            for (int i = 0; i < suite.entries; ++i) reach(suite.name + " " + std::to_string(i), table[i]);
        }
    }
};

TEST_F(Walk, EveryRoutineThatIsReachedAnswers) {
    expect_slots();
    expect_private_routines();
    expect_colour_models();
    {
        const Reports quiet;
        reach_all();
    }
    for (const auto& [address, name] : reached) EXPECT_EQ(calls.count(address), 1u) << "nobody calls " << name;
    const auto blocks = blocks_in_use();
    for (const auto& [address, call] : calls) {
        SCOPED_TRACE(call.name);
        EXPECT_EQ(reached.count(address), 1u) << "leads nowhere";
        const Reports reports;
        EXPECT_EQ(call.call(), call.code);
        const bool silent =
            call.code == 0 || call.name == "resize handle" || call.name == "slot 26" || call.name == "slot 27";
        EXPECT_EQ(reports.all().empty(), silent) << reports.last_text();
    }
    EXPECT_EQ(blocks_in_use(), blocks);
}

}  // namespace
