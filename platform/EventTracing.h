// What the event-tracing headers lack ("EVENT_INFO_CLASS enumeration (evntprov.h)").
#pragma once

#include <windows.h>

#include <wmistr.h>

#include <evntrace.h>

#include <evntprov.h>

#include <bit>

// The value lies outside the range that the header's shorter enumeration has, so a plain cast would be undefined.
inline constexpr auto EventProviderSetTraits = std::bit_cast<EVENT_INFO_CLASS>(2);

// The low byte of EVENT_DATA_DESCRIPTOR::Reserved is the descriptor's type.
inline constexpr ULONG EVENT_DATA_DESCRIPTOR_TYPE_NONE = 0;
inline constexpr ULONG EVENT_DATA_DESCRIPTOR_TYPE_EVENT_METADATA = 1;
inline constexpr ULONG EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA = 2;
static_assert(sizeof(EVENT_DATA_DESCRIPTOR) == 16);
static_assert(sizeof(EVENT_DESCRIPTOR) == 16);
