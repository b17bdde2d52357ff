// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/crc.hpp>

#include "QX/indep/QX_Export.h"
#include "opticalflow/src/HvVec2.h"
#include "opticalflow/src/QX_SolvanParams.h"

class QX_World;

/// Makes frames between frames: the nearest one, a mix, or by motion that is followed from frame to frame. The vectors
/// of a pair stay in the host's cache, so that each further position of the pair is cheap. Several may render at once.
class QX_EXPORT QX_AdvancedFrameBlending {
public:
    using Crc = boost::crc_optimal<32, 0x04C11DB7, 0xFFFFFFFF, 0xFFFFFFFF, true, true>;

    /// @param algo  with percentages, see QX_Solvan_AlgoParams
    QX_AdvancedFrameBlending(const QX_Solvan_AlgoParams& algo, const QX_Solvan_OtherParams& other,
                             const QX_Solvan_InterruptFuncs& interrupt);
    /// With the defaults.
    QX_AdvancedFrameBlending(const QX_Solvan_OtherParams& other, const QX_Solvan_InterruptFuncs& interrupt);

    /// @return 0, or 514 where a parameter is beyond its range or no number; without a report
    int CheckParamRange() const;

    /// Renders the frame at `position` of the pair into `output`. All three have one depth, and for motion one size;
    /// other modes read smaller frames by their edge. None may share pixels with another.
    /// @return 0; 514 as above; 516 for null, pixel-less or unlike worlds; 4 for want of memory; 3 for a GPU world; the
    ///         answer of the poll. All but 514, 517 and 10000 are reported. After an error the output is not whole.
    int Render(QX_World* firstFrame, QX_World* secondFrame, QX_World* output);

    /// Every algorithm field in its order, low byte first, without what lies between them.
    void ComputeCRC(Crc& crc) const;

    const QX_Solvan_AlgoParams& algo() const { return algo_; }

private:
    QX_Solvan_AlgoParams algo_;
    QX_Solvan_OtherParams other_;
    QX_Solvan_InterruptFuncs interrupt_;
};

/// The vectors of a pair as they are at the first frame, without a cache. Values are in pixels of the field, which is
/// `vectorDetail` of the frames' size; fractions, and unchecked.
/// @param interrupt    or null
/// @param firstMask, secondMask   one channel of 8 bits, the frames' size; what is 0 does not count; or null
/// @param forwardOut   vectors to the second frame, of any size; or null
/// @param backwardOut  vectors to the first frame; or null
/// @param third        not used
/// @return 0, also where channels or bits are none that are known; 516 for null, pixel-less or unlike buffers and a
/// block
///         size below 3; 4 for want of memory; the answer of the poll
QX_EXPORT int calcSolvanOpticalFlowParamsNoIpl(const QX_Solvan_AlgoParams& algo,
                                               const QX_Solvan_InterruptFuncs* interrupt, YetAnotherImgBuffer* first,
                                               YetAnotherImgBuffer* second, YetAnotherImgBuffer* firstMask,
                                               YetAnotherImgBuffer* secondMask, YetAnotherImgBuffer* forwardOut,
                                               YetAnotherImgBuffer* backwardOut, YetAnotherImgBuffer* third);
