// SPDX-License-Identifier: Apache-2.0
//
// Fixture of this folder: applications one after the other, each with one service of its own, so that what is
// reported for a service that is gone is not taken for a report of the next one.
#pragma once

#include <deque>
#include <string>

#include "lifetime/Phones.h"
#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

/// How often a re-entrant application does its turn.
inline constexpr int kRounds = 200;

class Lives : public SimulatedTv {
protected:
    /// Nothing was reported to an application whose service was gone.
    ~Lives() override;

    /// An application with a new service; it stays to the end of the test.
    App& Begin(const std::string& service);
    App& Last() { return m_apps.back(); }

    /// Results of all applications so far.
    std::size_t Results() const;

    /// Destroys the last service if it is there, lets everything come that is under way, and expects nothing
    /// on the TV that was the services'.
    void ExpectNothingLeft();

private:
    std::deque<App> m_apps;
};

/// Lives with the service's name as the parameter, and its phone in the room.
class LivesOfEach : public Lives, public ::testing::WithParamInterface<std::string> {
protected:
    LivesOfEach();
};

std::string ServiceName(const ::testing::TestParamInfo<std::string>& info);

}  // namespace lyn::test
