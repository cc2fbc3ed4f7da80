// What a recording says about the process that wrote it.
#pragma once

#include "recorder/RecordBuilder.h"

namespace mft_der
{

// Session and part are the caller's. Thread-safe.
tarn_recording_header MakeHeader() noexcept;

// The values of a file's first record.
void DescribeSession(RecordBuilder &values);

} // namespace mft_der
