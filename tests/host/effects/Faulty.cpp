// SPDX-License-Identifier: Apache-2.0
// An effect that copies its source, or does wrong what the variable FAULT in the environment says: "STEP-HOW", or a
// word. A step is describe, begin, room, render or pixel; how is a code to give back, or what to throw.
#include <QX/QX_Effect.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

bool is_told(const std::string& word) {
    const char* const told = std::getenv("FAULT");
    return told != nullptr && word == told;
}

/// The code of a step that has a fault; 0 else.
std::int32_t fault_in(const std::string& step) {
    const char* const told = std::getenv("FAULT");
    const std::string text = told != nullptr ? told : "";
    if (text.rfind(step + "-", 0) != 0) return 0;
    const std::string how = text.substr(step.size() + 1);
    if (how == "int") throw 7;
    if (how == "exception") throw std::runtime_error("bad luck");
    if (how == "other") throw "something";
    return std::atoi(how.c_str());
}

const char* const kWords[] = {"one", "two", nullptr};
const char* const kNoWords[] = {nullptr};
QXE_ParameterInfo parameters[] = {
    {sizeof(QXE_ParameterInfo), QXE_KindNumber, "number", "a number", -1, 2, {{0.5}, nullptr, 0}, nullptr},
    {sizeof(QXE_ParameterInfo), QXE_KindWhole, "whole", "a whole number", -3, 9, {{}, nullptr, 3}, nullptr},
    {sizeof(QXE_ParameterInfo), QXE_KindSwitch, "switch", "on or off", 0, 0, {{}, nullptr, 0}, nullptr},
    {sizeof(QXE_ParameterInfo), QXE_KindChoice, "choice", "a word", 0, 0, {{}, nullptr, 1}, kWords},
    {sizeof(QXE_ParameterInfo), QXE_KindPoint, "point", "a place", -9, 9, {{1, 2}, nullptr, 0}, nullptr},
    {sizeof(QXE_ParameterInfo), QXE_KindColour, "colour", "a colour", 0, 1, {{1, 0.5, 0, 1}, nullptr, 0}, nullptr},
    {sizeof(QXE_ParameterInfo), QXE_KindText, "text", nullptr, 0, 0, {{}, "a text", 0}, nullptr},
};

std::int32_t begin(QXE_Instance*) { return fault_in("begin"); }

std::int32_t room(QXE_Instance*, const QXE_Frame*, QXE_Room* room) {
    if (is_told("room-less")) room->left = -1;
    if (is_told("room-much")) room->right = INT32_MAX;
    return fault_in("room");
}

int pixel(void*, std::int32_t, std::int32_t, void*, void*) { return fault_in("pixel"); }

int each_pixel(const QXE_Instance* instance, const QXE_Frame* frame, QXE_World* from, QXE_World* to) {
    QXE_Iterate* iterate = instance->depth == 8 ? instance->callbacks->iterate : instance->callbacks->iterate16;
    if (instance->depth == 32) {
        const void* suite = nullptr;
        if (const int code = instance->basic->acquire(QXE_ITERATE_FLOAT_SUITE, 1, &suite)) return code;
        iterate = static_cast<const QXE_IterateDeepSuite1*>(suite)->iterate;
    }
    return iterate(frame->in_data, 0, from->height, from, nullptr, nullptr, &pixel, to);
}

void copy(const QXE_Instance* instance, const QXE_World* from, QXE_World* to) {
    const auto bytes = static_cast<std::size_t>(from->width * instance->depth / 2);
    for (std::ptrdiff_t y = 0; y < from->height; ++y) {
        std::memcpy(static_cast<char*>(to->data) + y * to->rowbytes,
                    static_cast<char*>(from->data) + y * from->rowbytes, bytes);
    }
}

/// What parameters came, as the words of a fault.
std::string told_values(const QXE_Frame& frame) {
    std::string words;
    for (std::uint32_t i = 0; i < frame.value_count; ++i) {
        const QXE_Value& value = frame.values[i];
        for (const double number : value.numbers) words += std::to_string(number).substr(0, 4) + " ";
        words += std::to_string(value.whole) + " " + (value.text != nullptr ? value.text : "-") + "; ";
    }
    return words;
}

std::int32_t render(QXE_Instance* instance, const QXE_Frame* frame, QXE_World* source, QXE_World* destination) {
    if (const std::int32_t code = fault_in("render")) return code;
    if (const std::int32_t code = each_pixel(instance, frame, source, destination)) return code;
    if (is_told("nothing")) return 0;
    if (is_told("values")) throw std::runtime_error(told_values(*frame));
    if (is_told("report")) return instance->callbacks->fill(nullptr, nullptr, nullptr, nullptr);
    if (is_told("kill-ask") || is_told("kill-never")) std::raise(SIGINT);
    for (int i = 0; is_told("kill-ask"); ++i) {
        if (const int code = frame->in_data->abort(frame->in_data->effect_ref)) return code;
        if (i == 1000) return 3;
    }
    copy(instance, source, destination);
    if (is_told("spoil")) {
        for (std::ptrdiff_t y = 0; y < source->height; ++y) {
            std::memset(static_cast<char*>(source->data) + y * source->rowbytes, 0,
                        static_cast<std::size_t>(source->width * instance->depth / 2));
        }
    }
    if (is_told("behind")) {
        char* const last = static_cast<char*>(destination->data) + (destination->height - 1) * destination->rowbytes;
        last[destination->width * instance->depth / 2] = 0;
    }
    return 0;
}

}  // namespace

extern "C" QXE_EXPORT std::int32_t QXE_DescribeEffect(QXE_Version, QXE_EffectInfo* info) {
    info->version.major = is_told("version-2.0") ? 2 : is_told("no-version") ? 0 : QXE_VERSION_MAJOR;
    info->version.minor = is_told("version-1.1") ? 1 : 0;
    info->name = is_told("no-name") ? nullptr : is_told("odd-name") ? "Odd Name" : "faulty";
    info->label = is_told("odd-text") ? "\xFF\xFE" : "Faulty";
    info->about = "copies, mostly";
    info->depths = is_told("no-depth") ? 0 : is_told("8-bits") ? QXE_Depth8 : QXE_AnyDepth;
    info->parameters = is_told("no-parameters") ? nullptr : parameters;
    info->parameter_count = sizeof parameters / sizeof *parameters;
    if (is_told("twice")) parameters[1].name = "number";
    if (is_told("nameless")) parameters[2].name = nullptr;
    if (is_told("small")) parameters[2].size = 8;
    if (is_told("kind")) parameters[2].kind = 7;
    if (is_told("default")) parameters[0].standard.numbers[0] = 2.5;
    if (is_told("default-nan")) parameters[4].standard.numbers[1] = __builtin_nan("");
    if (is_told("default-choice")) parameters[3].standard.whole = 2;
    if (is_told("default-whole")) parameters[1].standard.whole = 10;
    if (is_told("default-switch")) parameters[2].standard.whole = 2;
    if (is_told("default-colour")) parameters[5].standard.numbers[3] = __builtin_inf();
    if (is_told("no-range")) parameters[0].most = -2;
    if (is_told("no-choice")) parameters[3].choices = kNoWords;
    info->begin = begin;
    info->room = room;
    info->render = is_told("no-render") ? nullptr : render;
    return fault_in("describe");
}
