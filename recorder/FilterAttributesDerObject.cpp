#include "recorder/FilterAttributesDerObject.h"

#include "recorder/AttributeEncoder.h"

namespace mft_der
{

void FilterAttributesDerObject::AddTo(RecordBuilder &values) const
{
    AddAttributes(values, TARN_VALUE_ATTRIBUTES, attributes);
}

} // namespace mft_der
