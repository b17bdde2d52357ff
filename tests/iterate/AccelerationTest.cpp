// SPDX-License-Identifier: Apache-2.0
#include "QX/iterate/QX_ThreadProgress.h"
#include "QX/library/QX_Acceleration.h"

#include "QX/indep/QX_Progress.h"
#include "tests/iterate/IterateSupport.h"

namespace {

using qx::Slot;
using namespace qx::test;

/// What the test's own routines see and do; they have no refcon.
struct Stage {
    std::mutex lock{};
    std::vector<M_LRect> calls{};   ///< of the routines that the test put in the table
    const M_LRect* area = nullptr;  ///< of the last call
    std::function<int(const M_LRect&, const QX_ProgressInfo*)> answer{};

    int enter(const M_LRect* rect, const QX_ProgressInfo* info) {
        const M_LRect r = rect != nullptr ? *rect : M_LRect{};
        {
            const std::scoped_lock hold(lock);
            area = rect;
            calls.push_back(r);
        }
        return answer ? answer(r, info) : 0;
    }
};
Stage* stage = nullptr;

int premul_of_test(void* effect_ref, bool forward, const M_LRect* rect, QX_LayerDef*) {
    EXPECT_TRUE(forward);
    return stage->enter(rect, static_cast<const QX_ProgressInfo*>(effect_ref));
}
int transform_of_test(const QX_ProgressInfo* info, int quality, int flags, int field, QX_LayerDef*,
                      const QX_CompositeModePlus*, const QX_LinearBlendingTables*, const QX_MaskWorld*,
                      QX_ScratchBlock* scratch, const M_Matrix3*, int num_matrices, bool src2dst, const M_LRect* rect,
                      QX_LayerDef*) {
    EXPECT_TRUE(quality == 1 && flags == 2 && field == 3 && num_matrices == 4 && src2dst);
    EXPECT_TRUE(scratch->alpha_row != nullptr && scratch->spare_row != nullptr && scratch->motion[6] != nullptr);
    return stage->enter(rect, info);
}

/// The library born with one band, and the layer installed over a table of the test's.
class Layer : public testing::Test {
protected:
    Born born{1};
    Stage stage_;
    Reports reports;
    static inline std::string refusal;
    Picture<QX_Pixel8> world{6, 70};
    void *table[kQX_SlotCount] = {}, *before[kQX_SlotCount] = {};

    Layer() {
        stage = &stage_;
        std::copy_n(QXp_G_OverFuncs, kQX_SlotCount, table);
        qx::set_slot<Slot::PremulRect>(&premul_of_test, table);
        qx::set_slot<Slot::TransformWorldPlus>(&transform_of_test, table);
        std::copy_n(table, kQX_SlotCount, before);
    }
    int install(int bands, int interface_number = 2, std::int16_t major = 2) {
        standalone::SetBandCount(bands);
        qx::AccelerationRecord record{};
        record.interface_number = interface_number, record.major = major, record.minor = 1;
        record.routines = table, record.message = [](const char* words) { refusal = words; };
        return qx::acceleration_entry(record);
    }
    bool changed() const { return !std::equal(table, table + kQX_SlotCount, before); }
    int premul(const M_LRect* rect, QX_ProgressInfo* info = nullptr) {
        return qx::slot<Slot::PremulRect>(table)(info, true, rect, &world.record);
    }
    int transform(const M_LRect* rect, int xfer = xfer_over, QX_ProgressInfo* info = nullptr) {
        const QX_CompositeModePlus mode(xfer, 1.0f, nullptr, false, 0);
        return qx::slot<Slot::TransformWorld>(table)(info, 1, 2, 3, nullptr, &mode, nullptr, nullptr, nullptr, 4, true,
                                                     rect, &world.record);
    }
};

TEST_F(Layer, InstallDeclines) {
    EXPECT_EQ(install(1), 0);
    EXPECT_FALSE(changed());
    for (const auto& [number, major] : {std::pair<int, std::int16_t>{3, 2}, {2, 1}, {2, 3}}) {
        refusal.clear();
        EXPECT_EQ(install(8, number, major), 0);
        EXPECT_FALSE(changed());
        EXPECT_EQ(refusal, "The generic acceleration module does not work with this version of Vanteon");
    }
    standalone::SetThreadCountError(44);
    EXPECT_EQ(install(8), 44);
    standalone::SetThreadCountError(0);
    EXPECT_FALSE(changed());
    qx::AccelerationRecord stop{};
    stop.selector = 1;
    EXPECT_EQ(qx::acceleration_entry(stop), 0);
}

TEST_F(Layer, SixtyFourThreadsAreCutTo32) {
    install(64);
    const M_LRect rect{0, 0, 2, 640};
    EXPECT_EQ(premul(&rect), 0);
    EXPECT_EQ(stage_.calls.size(), 32u);
    for (const M_LRect& c : stage_.calls) EXPECT_EQ(c.bottom - c.top, 20);
}

TEST_F(Layer, RectangleRoutinesRunInBandsOrStraight) {
    const M_LRect some{1, 2, 4, 40}, one_column{1, 2, 2, 40}, empty{3, 2, 3, 40}, flat{0, 4, 6, 4};
    // Columns: name, rectangle, calls, rows
    const Cases<Text, const M_LRect*, std::size_t, int> cases = {{"all of the world", nullptr, 7, 70},
                                                                 {"a part", &some, 7, 38},
                                                                 {"one column", &one_column, 1, 38},
                                                                 {"no column", &empty, 1, 38},
                                                                 {"no row", &flat, 1, 0}};
    install(7);
    const std::int64_t blocks = blocks_in_use();
    stage_.answer = [](auto&&, const QX_ProgressInfo* info) { return info != nullptr ? 1 : 0; };  // null stays null
    for (const auto& [c, transforms] : each(cases, std::array{false, true})) {
        const auto& [name, rect, calls, rows] = c;
        SCOPED_TRACE(testing::Message() << name << (transforms ? ", transform" : ", premultiply"));
        stage_.calls.clear();
        EXPECT_EQ(transforms ? transform(rect) : premul(rect), 0);
        EXPECT_EQ(stage_.calls.size(), calls);
        int sum = 0;
        for (const M_LRect& band : stage_.calls) sum += band.bottom - band.top;
        EXPECT_EQ(sum, rows);
        EXPECT_TRUE(calls != 1 || stage_.area == rect) << "the caller's own rectangle";
    }
    EXPECT_EQ(blocks_in_use(), blocks) << "scratch is given back";
    for (const int mode : {+xfer_alpha_multiply, +xfer_alpha_multiply_luma, 16, 19}) {
        stage_.calls.clear();
        EXPECT_EQ(transform(nullptr, mode), 0);
        EXPECT_EQ(stage_.calls.size(), mode == 16 || mode == 19 ? 7u : 1u) << "those that reach outside are not cut";
    }
}

TEST_F(Layer, ScratchThatCannotBeHadIsTheTasksResult) {
    install(4);
    const WithExecutor executor(&run_in_turn);
    const std::int64_t blocks = blocks_in_use();
    for (int nth = 1; nth <= 10; ++nth) {  // three rows and seven buffers of the first band
        EXPECT_EQ(short_of_memory(nth, [&] { return transform(nullptr); }), 4) << nth;
        EXPECT_TRUE(stage_.calls.empty());
    }
    stage_.answer = [](auto&&...) -> int { throw std::runtime_error("a fault of the test"); };
    EXPECT_EQ(transform(nullptr), 3);
    EXPECT_EQ(blocks_in_use(), blocks);
}

TEST_F(Layer, GpuWorldsAreRefusedFirst) {
    install(4);
    BadWorlds bad;
    const auto iterate = qx::slot<Slot::Iterate>(table);
    Picture<QX_Pixel8> other(2, 2);
    const auto call = [&](QX_LayerDef* src, QX_LayerDef* dst) {
        return [=] { return iterate(nullptr, 0, 0, src, nullptr, nullptr, nullptr, dst); };
    };
    world.record = bad.gpu;
    expect_refused("gpu effect world is not supported.",
                   {[&] { return premul(nullptr); }, [&] { return transform(nullptr); }, call(nullptr, &bad.gpu),
                    call(&bad.gpu, &other.record)});
}

TEST_F(Layer, FirstFailureWinsAndBandsNotBegunStayOut) {
    install(7);
    stage_.answer = [](const M_LRect& r, auto&&) { return r.top == 40 ? 517 : 0; };  // band 4 of seven by ten rows
    const WithExecutor executor(ChosenOrder{{2, 4, 1}, {}});
    EXPECT_EQ(premul(nullptr), 517);
    EXPECT_EQ(stage_.calls, (std::vector<M_LRect>{{0, 20, 6, 30}, {0, 40, 6, 50}}));

    // Band 0 is still at work when band 1 fails; what band 0 gives later comes second.
    const boost::function<void(int)>* running = nullptr;
    stage_.answer = [&](const M_LRect& r, auto&&) {
        if (r.top != 0) return 7;
        std::thread(*running, 1).join();
        return 9;
    };
    standalone::SetExecutor([&](const boost::function<void(int)>& task, int) {
        running = &task;
        task(0);
    });
    EXPECT_EQ(premul(nullptr), 7);
}

/// A caller that counts where its callbacks run.
struct Caller {
    std::thread::id main = std::this_thread::get_id();
    std::atomic<int> on_main{0}, elsewhere{0}, answer{0};
    int total = 0;

    int called() {
        ++(std::this_thread::get_id() == main ? on_main : elsewhere);
        return answer;
    }
    static int abort(void* refcon) { return static_cast<Caller*>(refcon)->called(); }
    static int progress(void* refcon, std::int32_t, std::int32_t total) {
        static_cast<Caller*>(refcon)->total = total;
        return static_cast<Caller*>(refcon)->called();
    }
    QX_ProgressInfo info() { return {this, &abort, &progress}; }
};

TEST_F(Layer, CallbacksRunOnTheCallersThreadAndTheirAnswerReachesAll) {
    install(7);
    for (const bool aborts : {false, true}) {
        SCOPED_TRACE(aborts);
        stage_.answer = [=](const M_LRect& r, const QX_ProgressInfo* info) {
            if (!aborts) return qx::ask_progress(info, r.top, 100);
            return info->abort_func != nullptr ? info->abort_func(info->refcon) : 0;
        };
        Caller caller;
        QX_ProgressInfo info = caller.info();
        for (const int code : {0, 517}) {
            stage_.calls.clear(), caller.answer = code;
            const WithExecutor executor(ChosenOrder{{}, code == 0 ? std::set{1, 4} : std::set{3}});
            EXPECT_EQ(premul(nullptr, &info), code);
            EXPECT_EQ(stage_.calls.size(), code == 0 ? 7u : 4u);
            EXPECT_TRUE(caller.on_main == (code == 0 ? 2 : 3) && caller.elsewhere == 0);
        }
        info.progress_func = nullptr;
        EXPECT_EQ(premul(nullptr, &info), 517) << "to abort is asked where there is no progress";
        info.abort_func = nullptr;
        EXPECT_EQ(premul(nullptr, &info), 0) << "callbacks that are not there";
    }
}

/// The host's record behind effect_ref, with callbacks that count, and a pixel function that does nothing.
struct Effect {
    QX_ProgressInfo info;  ///< first: what effect_ref leads to is read as this record
    Caller caller{};
    QX_InData data{};

    Effect() {
        info = caller.info();
        data.effect_ref = this;
        data.abort = [](void* ref) { return Caller::abort(&static_cast<Effect*>(ref)->caller); };
        data.progress = [](void* ref, std::int32_t count, std::int32_t total) {
            return Caller::progress(&static_cast<Effect*>(ref)->caller, count, total);
        };
    }
    static int pixel(void*, std::int32_t, std::int32_t, void*, void*) { return 0; }
};

TEST(AcceleratedIterate, EffectsFindTheirRecordOnEveryThread) {
    const Born born(7);
    Effect effect;
    Picture<QX_Pixel8> world(3, 70);
    const WithExecutor executor(ChosenOrder{{}, {2}});
    const auto iterate = [&] {
        return QX_Iterate(&effect.data, 0, 70, nullptr, nullptr, nullptr, &Effect::pixel, &world.record);
    };
    EXPECT_EQ(iterate(), 0);
    EXPECT_TRUE(effect.caller.on_main == 10 && effect.caller.elsewhere == 0 && effect.caller.total == 70);
    effect.caller.answer = 517;
    EXPECT_EQ(iterate(), 517);
    EXPECT_EQ(effect.caller.on_main, 11);
    EXPECT_EQ(effect.data.effect_ref, &effect) << "the caller's record is only read";
}

/// Kept: without an effect_ref every thread calls the callbacks itself.
TEST(AcceleratedIterate, WithoutAnEffectRefEveryThreadCalls) {
    const Born born(7);
    static std::atomic<int> calls;
    calls = 0;
    QX_InData data{};
    data.progress = [](void* ref, std::int32_t, std::int32_t) {
        EXPECT_EQ(ref, nullptr);
        ++calls;
        return 0;
    };
    Picture<QX_Pixel8> world(3, 70);
    EXPECT_EQ(QX_Iterate(&data, 0, 70, nullptr, nullptr, nullptr, &Effect::pixel, &world.record), 0);
    EXPECT_EQ(calls, 70);
}

/// A routine below that is handed `effect_ref` alone reaches the host's record behind it.
TEST_F(Layer, TheRecordBehindEffectRefIsThreadSafeToo) {
    const auto polls = [](QX_InData* data, auto, auto, auto, auto, auto, auto, auto) {
        const auto* info = static_cast<const QX_ProgressInfo*>(data->effect_ref);
        if (const int code = info->abort_func(info->refcon)) return code;
        if (const int code = info->progress_func(info->refcon, 1, 9)) return code;
        return data->abort != nullptr ? data->abort(data->effect_ref) : 0;
    };
    qx::set_slot<Slot::Iterate>(polls, table);
    install(5);
    Effect effect;
    effect.data.abort = nullptr, effect.data.progress = nullptr;
    const WithExecutor executor(ChosenOrder{{}, {3}});
    const auto iterate = qx::slot<Slot::Iterate>(table);
    EXPECT_EQ(iterate(&effect.data, 0, 0, nullptr, nullptr, nullptr, nullptr, &world.record), 0);
    EXPECT_EQ(effect.caller.on_main, 2) << "and no abort of the effect's own";
    EXPECT_TRUE(effect.caller.elsewhere == 0 && effect.caller.total == 9);
    effect.caller.answer = 8;
    EXPECT_EQ(iterate(&effect.data, 0, 0, nullptr, nullptr, nullptr, nullptr, &world.record), 8);
}

/// Threads that fail at once: one code is kept, and all are told that one.
TEST(ThreadProgress, OneOfManyCodesReachesAll) {
    for (int round = 0; round < 50; ++round) {
        qx::ThreadProgress<QX_ProgressInfo> progress(nullptr);
        std::atomic<int> waiting{4};
        std::vector<int> told(4);
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&, i] {
                for (--waiting; waiting != 0;) std::this_thread::yield();
                told[static_cast<std::size_t>(i)] = progress.keep_error(i + 1);
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(told, std::vector(4, progress.first_error()));
        EXPECT_GT(progress.first_error(), 0);
    }
}

}  // namespace
