#include "tools/ks/KsResultText.h"

#include "platform/MediaFoundation.h"

#include <algorithm>
#include <array>

#include "base/HexText.h"

namespace tarn_host
{

namespace
{

struct NamedResult
{
    HRESULT result;
    const char *name;
};

constexpr HRESULT FromWin32(unsigned long code)
{
    return static_cast<HRESULT>(0x80070000UL | code);
}

constexpr auto kNames = std::to_array<NamedResult>({
    {S_FALSE, "S_FALSE"},
    {E_ACCESSDENIED, "E_ACCESSDENIED"},
    {E_FAIL, "E_FAIL"},
    {E_INVALIDARG, "E_INVALIDARG"},
    {E_NOINTERFACE, "E_NOINTERFACE"},
    {E_NOTIMPL, "E_NOTIMPL"},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    {E_POINTER, "E_POINTER"},
    {E_UNEXPECTED, "E_UNEXPECTED"},
    {MF_E_INVALIDREQUEST, "MF_E_INVALIDREQUEST"},
    {MF_E_NOT_INITIALIZED, "MF_E_NOT_INITIALIZED"},
    {MF_E_SHUTDOWN, "MF_E_SHUTDOWN"},
    {FromWin32(ERROR_BUSY), "ERROR_BUSY"},
    {FromWin32(ERROR_DEVICE_NOT_CONNECTED), "ERROR_DEVICE_NOT_CONNECTED"},
    {FromWin32(ERROR_GEN_FAILURE), "ERROR_GEN_FAILURE"},
    {FromWin32(ERROR_INSUFFICIENT_BUFFER), "ERROR_INSUFFICIENT_BUFFER"},
    {FromWin32(ERROR_INVALID_FUNCTION), "ERROR_INVALID_FUNCTION"},
    {FromWin32(ERROR_MORE_DATA), "ERROR_MORE_DATA"},
    {FromWin32(ERROR_NOT_FOUND), "ERROR_NOT_FOUND"},
    {FromWin32(ERROR_NOT_READY), "ERROR_NOT_READY"},
    {FromWin32(ERROR_SEM_TIMEOUT), "ERROR_SEM_TIMEOUT"},
    {FromWin32(ERROR_SET_NOT_FOUND), "ERROR_SET_NOT_FOUND"},
    // What the transforms themselves answer where nothing serves a call: a bare number.
    {ERROR_SET_NOT_FOUND, "ERROR_SET_NOT_FOUND, not supported"},
});

} // namespace

std::string DescribeResult(HRESULT result)
{
    const std::string number = mft_utils::HexText(static_cast<unsigned long>(result));
    const auto *const found =
        std::find_if(kNames.begin(), kNames.end(), [result](const NamedResult &one) { return one.result == result; });
    return found == kNames.end() ? number : number + " (" + found->name + ")";
}

} // namespace tarn_host
