// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace lyn {

/// Company identifier in the manufacturer data of every phone that a service looks for.
constexpr int COMPANY_ID = 117;

}  // namespace lyn
