// SPDX-License-Identifier: Apache-2.0
#include "pictures/ExrFacts.h"

#include <ImfBoxAttribute.h>
#include <ImfChannelList.h>
#include <ImfDoubleAttribute.h>
#include <ImfFloatAttribute.h>
#include <ImfIntAttribute.h>
#include <ImfRationalAttribute.h>
#include <ImfStringAttribute.h>
#include <ImfStringVectorAttribute.h>
#include <ImfTimeCodeAttribute.h>
#include <ImfVecAttribute.h>

#include <array>
#include <cstdio>
#include <iterator>

#include "pictures/Exr.h"

namespace qx::pictures {
namespace {

std::string words(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}
std::string words(const Imath::Box2i& box) {
    const std::int64_t width = std::int64_t{box.max.x} - box.min.x + 1,
                       height = std::int64_t{box.max.y} - box.min.y + 1;
    return std::to_string(width) + " x " + std::to_string(height) + " at " + std::to_string(box.min.x) + "," +
           std::to_string(box.min.y);
}
/// Hours, minutes, seconds and frames; a semicolon tells of dropped numbers.
std::string words(const Imf::TimeCode& code) {
    char text[40];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d%c%02d", code.hours(), code.minutes(), code.seconds(),
                  code.dropFrame() ? ';' : ':', code.frame());
    return text;
}
std::string words(const std::string& text) { return text; }
std::string words(const Imf::StringVector& texts) {
    std::string all;
    for (const auto& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}
std::string words(const Imf::Rational& ratio) { return std::to_string(ratio.n) + "/" + std::to_string(ratio.d); }
template <class Number> std::string words(const Imath::Vec2<Number>& v) {
    return words(double(v.x)) + ", " + words(double(v.y));
}
template <class Number> std::string words(const Imath::Vec3<Number>& v) {
    return words(double(v.x)) + ", " + words(double(v.y)) + ", " + words(double(v.z));
}

/// The value of an attribute of one of these types, else the type's name.
template <class... Values> std::string value_of(const Imf::Attribute& attribute) {
    std::string text;
    const auto read = [&]<class Value>() {
        const auto* typed = dynamic_cast<const Imf::TypedAttribute<Value>*>(&attribute);
        if (typed != nullptr) text = words(typed->value());
        return typed != nullptr;
    };
    const bool known = (read.template operator()<Values>() || ...);
    return known ? text : std::string("(") + attribute.typeName() + ")";
}

std::string packing_of(const Imf::Header& header) {
    const auto number = static_cast<std::size_t>(header.compression());
    return number < std::size(kExrPackings) ? kExrPackings[number] : "unknown";
}

std::string channels_of(const Imf::ChannelList& channels) {
    std::string all;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        const auto type = i.channel().type;
        const char* const kind = type == Imf::HALF ? "half" : type == Imf::FLOAT ? "float" : "whole";
        all += (all.empty() ? "" : ", ") + std::string(i.name()) + " " + kind;
    }
    return all;
}

}  // namespace

std::vector<Fact> facts_of(const Imf::Header& header) {
    std::vector<Fact> facts = {{"display window", words(header.displayWindow())},
                               {"data window", words(header.dataWindow())},
                               {"compression", packing_of(header)},
                               {"channels", channels_of(header.channels())}};
    for (auto i = header.begin(); i != header.end(); ++i) {
        if (is_own_attribute(i.name()) && std::string(i.name()) != "view") continue;
        facts.push_back(
            {i.name(),
             value_of<std::string, int, float, double, Imf::TimeCode, Imf::Rational, Imf::StringVector, Imath::V2i,
                      Imath::V2f, Imath::V2d, Imath::V3i, Imath::V3f, Imath::V3d, Imath::Box2i>(i.attribute())});
    }
    return facts;
}

}  // namespace qx::pictures
