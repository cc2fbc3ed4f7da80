// Failing calls as exceptions.
#pragma once

#include <windows.h>

#include <string>

#include "base/ComException.h"
#include "base/HexText.h"

namespace mft_utils
{

// As in "MFCreateSample failed with 0x8007000E".
inline std::string FailureText(const std::string &call, HRESULT result)
{
    return call + " failed with " + HexText(static_cast<unsigned long>(result));
}

// Its text names the call and the result.
class FailedCall : public ComException
{
  public:
    FailedCall(HRESULT failure, const std::string &call) : ComException(failure, FailureText(call, failure)) {}
};

// Throws Exception(result, text) when `result` is a failure; with FailedCall the text is the call's name.
template <class Exception = FailedCall>
void ThrowIfFailed(HRESULT result, const char *text)
{
    if (FAILED(result))
    {
        throw Exception(result, text);
    }
}

} // namespace mft_utils
