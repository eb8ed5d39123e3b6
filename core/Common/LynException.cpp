// SPDX-License-Identifier: Apache-2.0
#include "Common/LynException.h"

namespace lyn {

LynException::LynException(const std::string& message, lyn_error_e code)
    : m_Message(std::make_shared<const std::string>(message)),
      m_Code(code)
{
}

LynException::~LynException() = default;

}  // namespace lyn
