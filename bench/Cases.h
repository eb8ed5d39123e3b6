// SPDX-License-Identifier: Apache-2.0
//
// The benchmarks, by file. Each function registers its cases; main() does the rest.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace lyn::bench {

/// Registers a case. `body` prepares, loops over the state and cleans up; what it throws fails the case.
void AddCase(const std::string& name, std::function<void(benchmark::State&)> body);

void AddYardstick();
void AddForeignAdverts();
void AddAcceptedAdverts();
void AddRequests();
void AddCalls();

}  // namespace lyn::bench
