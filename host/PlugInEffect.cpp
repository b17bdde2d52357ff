// SPDX-License-Identifier: Apache-2.0
#include "host/PlugInEffect.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "host/LastReport.h"
#include "pictures/Picture.h"
#include "scene/Words.h"
#include "scene/effects/Work.h"

namespace qx::host {
namespace {

/// Bits that no effect writes into a whole pixel: at 8 bits by no likely chance, in deeper ones never, as they lie
/// above full and are no number.
constexpr QX_Pixel8 kMark8{0x5A, 0xC7, 0x13, 0xE9};
constexpr QX_Pixel16 kMark16{0xA55A, 0xC7E9, 0x93A5, 0xE913};
constexpr std::array<std::uint32_t, 4> kMarkFloat{0x7FC5A5A5, 0xFFC39C13, 0x7FD1E9E9, 0xFFC0B4A7};

QX_Pixel8 mark_of(const QX_Pixel8*) { return kMark8; }
QX_Pixel16 mark_of(const QX_Pixel16*) { return kMark16; }
QX_PixelFloat mark_of(const QX_PixelFloat*) {
    QX_PixelFloat mark;
    static_assert(sizeof mark == sizeof kMarkFloat);
    std::memcpy(&mark, kMarkFloat.data(), sizeof mark);
    return mark;
}

void mark(const QX_World& world) {
    pictures::with_pixel_of(world, [&]<class Pixel>() {
        const Pixel mark = mark_of(static_cast<const Pixel*>(nullptr));
        for (int y = 0; y < world.height; ++y) std::fill_n(row_of<Pixel>(world, y), world.width, mark);
    });
}

/// Whether no pixel is another than it was marked.
bool is_untouched(const QX_World& world) {
    return pictures::with_pixel_of(world, [&]<class Pixel>() {
        const Pixel mark = mark_of(static_cast<const Pixel*>(nullptr));
        return !pictures::any_pixel<Pixel>(
            world, [&](const Pixel& p, int, int) { return std::memcmp(&p, &mark, sizeof mark) != 0; });
    });
}

}  // namespace

/// A parameter and its value, or values from frame to frame.
struct PlugInEffect::Parameter {
    const QXE_ParameterInfo& info;
    scene::Track<1> number;
    scene::Track<2> point;
    int whole;
    bool is_on;
    std::array<double, 4> colour;
    std::string text;
    std::vector<const char*> words;

    explicit Parameter(const QXE_ParameterInfo& told)
        : info(told),
          number(scene::Track<1>::Value{told.standard.numbers[0]}),
          point(scene::Track<2>::Value{told.standard.numbers[0], told.standard.numbers[1]}),
          whole(told.standard.whole),
          is_on(told.standard.whole != 0),
          text(told.kind == QXE_KindText && told.standard.text != nullptr ? told.standard.text : "") {
        std::copy_n(told.standard.numbers, 4, colour.begin());
        for (auto word = told.choices; told.kind == QXE_KindChoice && *word != nullptr; ++word) words.push_back(*word);
    }

    scene::Key key() {
        const char* const help = info.help != nullptr ? info.help : "";
        switch (info.kind) {
            case QXE_KindNumber:
                return {info.name, "N", help, scene::NumbersKey{1, info.least, info.most, &number}};
            case QXE_KindPoint:
                return {info.name, "X,Y", help, scene::NumbersKey{2, info.least, info.most, &point}};
            case QXE_KindWhole:
                return {info.name, "N", help,
                        scene::WholeKey{static_cast<int>(info.least), static_cast<int>(info.most), &whole}};
            case QXE_KindSwitch:
                return {info.name, nullptr, help, scene::FlagKey{&is_on}};
            case QXE_KindChoice:
                return {info.name, "WORD", help, scene::ChoiceKey{words, &whole}};
            case QXE_KindColour:
                return {info.name, "R,G,B[,A]", help, scene::ColourKey{&colour}};
            default:
                return {info.name, "TEXT", help, scene::TextKey{[this](const std::string& told) { text = told; }}};
        }
    }

    /// What lies between two keys may be rounded out of the range.
    double in_range(double x) const { return std::clamp(x, info.least, info.most); }

    QXE_Value at(double frame) const {
        QXE_Value value{};
        switch (info.kind) {
            case QXE_KindNumber:
                value.numbers[0] = in_range(number.at(frame)[0]);
                break;
            case QXE_KindPoint:
                for (std::size_t i = 0; i < 2; ++i) value.numbers[i] = in_range(point.at(frame)[i]);
                break;
            case QXE_KindColour:
                std::copy_n(colour.begin(), 4, value.numbers);
                break;
            case QXE_KindText:
                value.text = text.c_str();
                break;
            case QXE_KindSwitch:
                value.whole = is_on ? 1 : 0;
                break;
            default:
                value.whole = whole;
        }
        return value;
    }
};

/// One frame's way through an effect.
class PlugInEffect::Run {
public:
    Run(const PlugInEffect& effect, scene::Canvas& canvas, const scene::Moment& moment)
        : effect_(effect), canvas_(canvas), moment_(moment), progress_(moment.watch) {
        for (const auto& parameter : effect.parameters_) values_.push_back(parameter->at(moment.frame));
        frame_.size = sizeof frame_;
        frame_.value_count = static_cast<std::uint32_t>(values_.size());
        frame_.values = values_.data();
        frame_.number = moment.frame;
        frame_.width = canvas.world->width;
        frame_.height = canvas.world->height;
        frame_.in_data = progress_.context();
    }

    void run() {
        const int depth = canvas_.world->Depth();
        const unsigned bit = depth == 8 ? QXE_Depth8 : depth == 16 ? QXE_Depth16 : QXE_Depth32;
        if ((effect_.module_->info().depths & bit) == 0) {
            fail(depth == 32 ? "does not take floats" : "does not take " + std::to_string(depth) + " bits");
        }
        forget_report();
        auto instance = effect_.take({depth, moment_.quality, moment_.rate});
        must(instance->begun());
        QXE_Room room{};
        must(instance->room(frame_, room));
        auto result = new_result(room);
        mark(*result);
        QX_LayerDef source = scene::record_of(*canvas_.world), destination = scene::record_of(*result);
        must(instance->render(frame_, source, destination));
        if (result->SubWorldSafetyGutterHasBeenOverWritten()) fail("wrote behind the last pixel of its result");
        if (is_untouched(*result)) fail("wrote nothing");
        effect_.give_back(std::move(instance));
        moment_.watch.must_go_on();
        canvas_.world = std::move(result);
        canvas_.x -= room.left;
        canvas_.y -= room.top;
    }

private:
    [[noreturn]] void fail(const std::string& words) const {
        throw pictures::Failure(effect_.module_->path(), "layer " + std::to_string(moment_.layer) + ": frame " +
                                                             scene::words(moment_.frame) + ": " + words);
    }
    /// Nobody knows what an instance that failed is worth: it ends.
    void must(const Outcome& outcome) const {
        if (outcome.code == 0) return;
        if (outcome.code == kQX_Interrupted) {
            moment_.watch.must_go_on();
            fail("stopped as if it had been asked to (code 517)");
        }
        const std::string report = last_report();
        fail(outcome.words() + (report.empty() ? "" : ": " + report));
    }
    std::unique_ptr<QX_World> new_result(const QXE_Room& room) const {
        constexpr int most = pictures::kMostSide;
        for (const std::int32_t side : {room.left, room.top, room.right, room.bottom}) {
            if (side < 0) fail("asks for less room than it has");
        }
        const auto width = std::int64_t{frame_.width} + room.left + room.right;
        const auto height = std::int64_t{frame_.height} + room.top + room.bottom;
        if (width > most || height > most) {
            fail("asks for room for " + std::to_string(width) + " x " + std::to_string(height) + " pixels; at most " +
                 std::to_string(most) + " a side");
        }
        return pictures::new_world(moment_.subject, width, height, canvas_.world->Depth(), false);  // it is marked
    }

    const PlugInEffect& effect_;
    scene::Canvas& canvas_;
    const scene::Moment& moment_;
    EffectProgress progress_;
    std::vector<QXE_Value> values_;
    QXE_Frame frame_{};
};

PlugInEffect::PlugInEffect(std::shared_ptr<const EffectModule> module) : module_(std::move(module)) {
    for (const QXE_ParameterInfo* info : module_->parameters())
        parameters_.push_back(std::make_shared<Parameter>(*info));
}

scene::Keys PlugInEffect::keys() {
    scene::Keys keys;
    for (const auto& parameter : parameters_) keys.push_back(parameter->key());
    return keys;
}

std::unique_ptr<EffectInstance> PlugInEffect::take(const InstanceSettings& settings) const {
    {
        const std::lock_guard lock(mutex_);
        const auto fits = [&](const auto& one) { return one->settings() == settings; };
        const auto found = std::find_if(idle_.begin(), idle_.end(), fits);
        if (found != idle_.end()) {
            auto taken = std::move(*found);
            idle_.erase(found);
            return taken;
        }
    }
    return std::make_unique<EffectInstance>(*module_, settings);
}

void PlugInEffect::give_back(std::unique_ptr<EffectInstance> instance) const {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(instance));
}

void PlugInEffect::rest() const {
    const std::lock_guard lock(mutex_);
    idle_.clear();
}

void PlugInEffect::apply(scene::Canvas& canvas, const scene::Moment& moment) const { Run(*this, canvas, moment).run(); }

}  // namespace qx::host
