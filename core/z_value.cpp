#include "core/z_value.h"

#include "state/z_stream.h"

namespace halvern {

void ZValue::writeTo(ZStream& stream) const
{
    stream.WriteString(toStorageText());
}

bool ZValue::setByIndex(int index, int count)
{
    return setNormalized(count > 1 ? static_cast<double>(index) / (count - 1) : 0.0);
}

} // namespace halvern
