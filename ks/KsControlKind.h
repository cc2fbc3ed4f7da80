// Kind of a KS handler: selects how its identifier is spelled in traces.
#pragma once

#include "trace/KsIdentifierTranslator.h"

namespace mft_core
{

// Property 0, event 1, method 2.
using KsControlKind = mft_utils::KsIdentifierKind;

} // namespace mft_core
