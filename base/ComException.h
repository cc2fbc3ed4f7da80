// Exception that carries an HRESULT from a constructor to the COM boundary.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

namespace mft_utils
{

class ComException : public std::runtime_error
{
  public:
    ComException(HRESULT failure, const std::string &message) : std::runtime_error(message), result(failure) {}

    HRESULT Result() const noexcept
    {
        return result;
    }

  private:
    HRESULT result;
};

} // namespace mft_utils
