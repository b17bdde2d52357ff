// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>

#include "QX/color/QX_ColourEngine.h"
#include "tests/support/Test.h"

/// A colour engine that writes down what it is asked, and counts what it has handed out.
namespace qx::test {

template <class Base> class Counted : public Base {
public:
    explicit Counted(std::string text, std::atomic<std::int64_t>* live) : text(std::move(text)), live_(live) {
        ++*live_;
    }
    virtual ~Counted() { --*live_; }
    void Reference() override { ++references; }
    void UnReference() override {
        if (--references == 0) delete this;
    }
    const std::string text;  ///< what it is, or how it was made
    std::atomic<int> references{1};

private:
    std::atomic<std::int64_t>* live_;
};

class RecordedProfile : public Counted<CMX_Profile> {
public:
    RecordedProfile(const std::string& name, std::atomic<std::int64_t>* live) : Counted(name, live) {}
    std::wstring Name() const override { return {text.begin(), text.end()}; }
    bool IsOverRange() const override { return text.find("over") != std::string::npos; }
    t_CMX_ID ID() const override { return {}; }
    CMX_Error MakeLinear(CMX_Profile** linear) const override;
};
using RecordedTransform = Counted<CMX_Transform>;

inline std::string name_of(const CMX_Profile* profile) {
    const std::wstring name = profile->Name();
    return {name.begin(), name.end()};
}
inline std::string four(std::uint32_t code) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(code >> shift);
    return text;
}
inline std::string text_of(const t_CMX_Options& options) {
    std::ostringstream text;
    text << '{';
    for (std::uint32_t i = 0; i < options.count; ++i)
        text << (i > 0 ? " " : "") << four(options.pairs[i].key) << options.pairs[i].value;
    text << '}';
    return text.str();
}

/// Takes the registry's place while it lives.
class RecordingEngine {
public:
    RecordingEngine() {
        now_ = this;
        standalone::SetRegistry(&find);
        HCL_XIFAddressProc registry = nullptr;
        HCL_GetXIFAddressProc(&registry);
        load_colour_engine(registry);
    }
    ~RecordingEngine() {
        now_ = nullptr;
        standalone::SetRegistry({});
    }
    RecordingEngine(RecordingEngine&&) = delete;

    std::vector<std::string> asked;  ///< names that the registry was asked for
    std::string missing;             ///< which of them it does not have
    std::vector<std::string> calls;
    std::string failing;  ///< the procedure that fails
    static constexpr CMX_Error kFault = 4711;
    std::atomic<std::int64_t> live = 0;  ///< objects that somebody holds
    std::function<void(const void* src, void* dst, std::int64_t count)> pixels;

    /// A profile for a call; those of a name with "over" in it are over range.
    HCL_CMX_Profile profile(const std::string& name) { return HCL_CMX_Profile(new RecordedProfile(name, &live)); }
    HCL_CMX_Transform transform(const std::string& text) {
        return HCL_CMX_Transform(new RecordedTransform(text, &live));
    }
    static std::string text_of_transform(const CMX_Transform* t) {
        return static_cast<const RecordedTransform*>(t)->text;
    }

private:
    friend class RecordedProfile;

    CMX_Error called(const std::string& procedure, const std::string& arguments = {}) {
        const std::lock_guard lock(lock_);
        calls.push_back(procedure + (arguments.empty() ? "" : " " + arguments));
        return procedure == failing ? kFault : 0;
    }
    static CMX_Error give(CMX_Error error, const std::string& text, CMX_Profile** profile) {
        if (error == 0) *profile = new RecordedProfile(text, &now_->live);
        return error;
    }
    static CMX_Error give(CMX_Error error, const std::string& text, CMX_Transform** transform) {
        if (error == 0) *transform = new RecordedTransform(text, &now_->live);
        return error;
    }

    static void* find(const char* label, const char* name) {
        const std::lock_guard lock(now_->lock_);
        now_->asked.push_back(std::string(label) + " " + name);
        if (now_->missing == name) return nullptr;
#define X(procedure) \
    if (std::string(name) == #procedure) return reinterpret_cast<void*>(&RecordingEngine::procedure);
        QX_CMX_PROCEDURES(X)
#undef X
        return nullptr;
    }
    static CMX_Error ProfileFromCode(CMX_ProfileCode code, CMX_Profile** profile) {
        return give(now_->called("ProfileFromCode", four(code)), four(code), profile);
    }
    static CMX_Error MainMonitorProfile(CMX_Profile** profile) {
        return give(now_->called("MainMonitorProfile"), "main", profile);
    }
    static CMX_Error MonitorProfileN(void* display, CMX_Profile** profile) {
        const std::string text = static_cast<const char*>(display);
        return give(now_->called("MonitorProfileN", text), text, profile);
    }
    static CMX_Error MakeColorTransform(CMX_Profile* from, CMX_Profile* to, std::int32_t intent,
                                        const t_CMX_Options* options, CMX_Transform** transform) {
        const std::string text = name_of(from) + ">" + name_of(to) + " " + std::to_string(intent) + text_of(*options);
        return give(now_->called("MakeColorTransform", text), text, transform);
    }
    static CMX_Error ReferenceTransform(CMX_Transform* transform) {
        const CMX_Error error = now_->called("ReferenceTransform");
        if (error == 0) transform->Reference();
        return error;
    }
    static CMX_Error UnReferenceTransform(CMX_Transform* transform) {
        transform->UnReference();
        return now_->called("UnReferenceTransform");
    }
    static CMX_Error ApplyTransform(CMX_Transform* transform, std::uint32_t layout, const void* src,
                                    std::uint32_t src_format, void* dst, std::uint32_t dst_format, std::int64_t count,
                                    const t_CMX_Options* options) {
        const CMX_Error error = now_->called("ApplyTransform", text_of_transform(transform) + " " + four(layout) + " " +
                                                                   four(src_format) + ">" + four(dst_format) + " " +
                                                                   std::to_string(count) + text_of(*options));
        if (error == 0 && now_->pixels) now_->pixels(src, dst, count);
        return error;
    }
    static CMX_Error ConcatTransforms(CMX_Transform* first, CMX_Transform* second, CMX_Transform** both) {
        const std::string text = "(" + text_of_transform(first) + ", " + text_of_transform(second) + ")";
        return give(now_->called("ConcatTransforms"), text, both);
    }
    static CMX_Error OptimizeTransform(CMX_Transform* transform, const t_CMX_Options* options, CMX_Transform** fast) {
        const std::string text = "fast " + text_of_transform(transform) + text_of(*options);
        return give(now_->called("OptimizeTransform"), text, fast);
    }
    static CMX_Error ExtractCalRGB(CMX_Profile* profile, double* red, double* green, double* blue) {
        *red = 1.5, *green = 2.25, *blue = 3.1;
        return now_->called("ExtractCalRGB", name_of(profile));
    }

    static inline RecordingEngine* now_ = nullptr;
    std::mutex lock_;
};

inline CMX_Error RecordedProfile::MakeLinear(CMX_Profile** linear) const {
    return RecordingEngine::give(RecordingEngine::now_->called("MakeLinear", text), "linear " + text, linear);
}

}  // namespace qx::test
