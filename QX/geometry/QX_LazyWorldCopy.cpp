// SPDX-License-Identifier: Apache-2.0
#include "QX/geometry/QX_LazyWorldCopy.h"

#include "QX/geometry/QX_CopyBits.h"
#include "QX/indep/QX_Guard.h"

M_Vector2T<short> QX_LazyWorldCopyOperator::GetExtent() const {
    if (source_ == nullptr) return {0, 0};
    return {static_cast<short>(source_->width), static_cast<short>(source_->height)};
}

void QX_LazyWorldCopyOperator::DoItImp(const M_Rect& rect) {
    const M_LRect r = M_RectToLRect(rect);
    qx::throw_if(QX_CopyBits_Draft(nullptr, source_, destination_, &r, &r));
}
