#include "sim/KsReply.h"

#include <algorithm>
#include <cstring>

namespace tarn_sim
{

namespace
{
#pragma pack(push, 1)
struct RangeReply
{
    KSPROPERTY_DESCRIPTION description;
    KSPROPERTY_MEMBERSHEADER members;
    ByteRange range;
};
struct DefaultReply
{
    KSPROPERTY_DESCRIPTION description;
    KSPROPERTY_MEMBERSHEADER members;
    std::uint8_t value;
};
#pragma pack(pop)
static_assert(sizeof(RangeReply) == 59 && sizeof(DefaultReply) == 57);

KSPROPERTY_DESCRIPTION MakeDescription(ULONG accessFlags, ULONG size, ULONG memberLists)
{
    KSPROPERTY_DESCRIPTION description{};
    description.AccessFlags = accessFlags;
    description.DescriptionSize = size;
    description.PropTypeSet.Set = KSPROPTYPESETID_General;
    description.PropTypeSet.Id = VT_UI1;
    description.MembersListCount = memberLists;
    return description;
}
} // namespace

HRESULT WriteReply(const void *reply, ULONG size, void *data, ULONG dataLength, ULONG &returned)
{
    if (dataLength == 0)
    {
        returned = size;
        return HRESULT_FROM_WIN32(ERROR_MORE_DATA);
    }
    if (dataLength < size)
    {
        return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    }
    if (data == nullptr)
    {
        return E_POINTER;
    }
    std::memcpy(data, reply, size);
    returned = size;
    return S_OK;
}

HRESULT WriteBasicSupport(ULONG accessFlags, const ByteRange *range, void *data, ULONG dataLength, ULONG &returned)
{
    if (range != nullptr && (dataLength == 0 || dataLength >= sizeof(RangeReply)))
    {
        RangeReply reply{};
        reply.description = MakeDescription(accessFlags, sizeof(reply), 1);
        reply.members.MembersFlags = KSPROPERTY_MEMBER_STEPPEDRANGES;
        reply.members.MembersSize = sizeof(ByteRange);
        reply.members.MembersCount = 1;
        reply.range = *range;
        return WriteReply(&reply, sizeof(reply), data, dataLength, returned);
    }
    const ULONG fullSize = range != nullptr ? ULONG{sizeof(RangeReply)} : ULONG{sizeof(KSPROPERTY_DESCRIPTION)};
    const KSPROPERTY_DESCRIPTION description = MakeDescription(accessFlags, fullSize, range != nullptr ? 1 : 0);
    const bool flagsOnly = dataLength != 0 && dataLength < sizeof(description);
    return WriteReply(&description, flagsOnly ? sizeof(ULONG) : sizeof(description), data, dataLength, returned);
}

HRESULT WriteDefaultValue(ULONG accessFlags, std::uint8_t value, void *data, ULONG dataLength, ULONG &returned)
{
    DefaultReply reply{};
    reply.description = MakeDescription(accessFlags, sizeof(reply), 1);
    reply.members.MembersFlags = KSPROPERTY_MEMBER_VALUES;
    reply.members.MembersSize = sizeof(reply.value);
    reply.members.MembersCount = 1;
    reply.members.Flags = KSPROPERTY_MEMBER_FLAG_DEFAULT;
    reply.value = value;
    return WriteReply(&reply, sizeof(reply), data, dataLength, returned);
}

} // namespace tarn_sim
