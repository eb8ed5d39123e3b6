// SPDX-License-Identifier: Apache-2.0
#include "support/LastWords.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>

// Where there is a sanitizer.
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace lyn::test {
namespace {

constexpr unsigned kMostSeconds = 250;

std::array<char, 512> s_isDone{};

void SayLastWords()
{
    constexpr const char* words = "\nDIED in  ";
    const bool isSaid = write(STDERR_FILENO, words, std::strlen(words)) >= 0 &&
                        write(STDERR_FILENO, s_isDone.data(), std::strlen(s_isDone.data())) >= 0 &&
                        write(STDERR_FILENO, "\n", 1) >= 0;
    static_cast<void>(isSaid);
}

void OnFatalSignal(int signal)
{
    SayLastWords();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

}  // namespace

void PrepareLastWords()
{
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(SayLastWords);
    } else {
        std::signal(SIGSEGV, OnFatalSignal);
    }
    std::signal(SIGABRT, OnFatalSignal);
    std::signal(SIGALRM, OnFatalSignal);
}

void SayWhatIsDone(const std::string& what)
{
    alarm(kMostSeconds);
    std::snprintf(s_isDone.data(), s_isDone.size(), "%s", what.c_str());
}

const char* WhatIsDone()
{
    return s_isDone.data();
}

}  // namespace lyn::test
