// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Records.h"
#include "QX/world/QX_LazyTiles.h"

/// Copies one world to the same place in another, by nearest pixels and between any depths. Neither world is owned.
class QX_EXPORT QX_LazyWorldCopyOperator : public QX_LazyOperator {
public:
    QX_LazyWorldCopyOperator(QX_LayerDef* source, QX_LayerDef* destination)
        : source_(source), destination_(destination) {}
    void SetSourceWorld(QX_LayerDef* source) { source_ = source; }
    M_Vector2T<short> GetExtent() const override;  ///< of the source; none without one

protected:
    void DoItImp(const M_Rect& rect) override;

private:
    QX_LayerDef *source_, *destination_;
};
