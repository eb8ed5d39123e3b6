// SPDX-License-Identifier: Apache-2.0
#include "lifetime/Lives.h"

namespace lyn::test {

Lives::~Lives()
{
    int lateReports = 0;
    for (const App& app : m_apps) {
        lateReports += app.lateReports;
    }
    EXPECT_EQ(lateReports, 0) << "reports for a service that was gone";
}

App& Lives::Begin(const std::string& service)
{
    App& app = m_apps.emplace_back();
    EXPECT_EQ(app.Create(service), LYN_ERROR_NONE);
    return app;
}

std::size_t Lives::Results() const
{
    std::size_t count = 0;
    for (const App& app : m_apps) {
        count += app.results.size();
    }
    return count;
}

void Lives::ExpectNothingLeft()
{
    if (!m_apps.empty() && Last().handle != nullptr) {
        EXPECT_EQ(Last().Destroy(), LYN_ERROR_NONE);
    }
    simulator::Settle();
    const simulator::Counts alive = simulator::Alive();
    EXPECT_EQ(alive.clients, 0);
    EXPECT_EQ(alive.links, 0);
    EXPECT_EQ(alive.productInits, 0);
    // A scan outlives its service unless it is stopped before.
    EXPECT_EQ(alive.registrations, alive.scanning ? 1 : 0);
}

LivesOfEach::LivesOfEach()
{
    simulator::AddPhone(PhoneFor(GetParam()));
}

std::string ServiceName(const ::testing::TestParamInfo<std::string>& info)
{
    return info.param;
}

}  // namespace lyn::test
