#include "modulation/transfer_curve.h"

namespace halvern {

ZTransferCurve::ZTransferCurve()
{
    addPoint({0.0, 0.0, 1.0});
    addPoint({1.0, 1.0, 1.0});
}

bool ZTransferCurve::addPoint(Point point)
{
    return envelope_.addPoint({point.x, point.y, {ZEnvelopeComputer::ItemExponencial, point.curve}});
}

ZTransferCurve::Point ZTransferCurve::point(int index) const
{
    const ZEnvelopeComputer::Point& p = envelope_.point(index);
    return {p.x, p.y, p.segment.parameter};
}

bool ZTransferCurve::operator==(const ZTransferCurve& other) const
{
    if (pointCount() != other.pointCount())
        return false;
    for (int i = 0; i < pointCount(); ++i)
        if (!(point(i) == other.point(i)))
            return false;
    return true;
}

} // namespace halvern
