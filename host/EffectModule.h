// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QX/QX_Effect.h"

namespace qx::host {

/// A loaded module with an effect, whose description has been checked. It is unloaded with its last owner.
class EffectModule {
public:
    /// The module keeps its names to itself. Throws pictures::Failure for what is no effect of this host.
    static std::shared_ptr<const EffectModule> load(const std::string& path);
    ~EffectModule();
    EffectModule(const EffectModule&) = delete;
    EffectModule& operator=(const EffectModule&) = delete;

    const std::string& path() const { return path_; }
    const QXE_EffectInfo& info() const { return info_; }
    const std::vector<const QXE_ParameterInfo*>& parameters() const { return parameters_; }

private:
    explicit EffectModule(const std::string& path);

    std::string path_;
    void* module_;
    QXE_EffectInfo info_{};
    std::vector<const QXE_ParameterInfo*> parameters_;
};

}  // namespace qx::host
