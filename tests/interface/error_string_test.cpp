// SPDX-License-Identifier: Apache-2.0
//
// The names of results through the C interface.
#include <climits>

#include "interface/Functions.h"
#include "support/App.h"

namespace lyn::test {
namespace {

std::string TextOf(lyn_service_h handle, int result)
{
    return lyn_get_request_initiating_error_string(handle, static_cast<lyn_request_initiating_result_e>(result));
}

class ErrorString : public SimulatedTv, public ::testing::WithParamInterface<std::string> {
protected:
    ErrorString() : m_app(GetParam()) { simulator::ClearLog(); }

    App m_app;
};

TEST_P(ErrorString, NamesEveryResult)
{
    const std::vector<std::pair<int, std::string>> names = {{0, "Success"},
                                                            {1, "GattFail"},
                                                            {2, "NotRegisteredDevice"},
                                                            {3, "UnknownErr"},
                                                            {4, "CommandErr"},
                                                            {5, "NotSupported"},
                                                            {6, "Connected"},
                                                            {8, "NotTap"},
                                                            {9, "NotStartedKov"},
                                                            {10, "NotStartedMirroring"},
                                                            {11, "GattDisconnected"}};
    for (const auto& [result, name] : names) {
        SCOPED_TRACE(name);
        simulator::ClearLog();
        EXPECT_EQ(TextOf(m_app.handle, result), name);
        EXPECT_EQ(Messages(INFO), Texts({"errorString : " + name}));
        EXPECT_TRUE(Messages(ERROR).empty());
    }
}

TEST_P(ErrorString, IsUnknownErrForResultsWithoutAName)
{
    for (const int result : {7, 12, 100, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(result);
        simulator::ClearLog();
        EXPECT_EQ(TextOf(m_app.handle, result), "UnknownErr");
        EXPECT_EQ(Messages(ERROR), Texts({"Not mached errorCode", "exception: Not mached errorCode"}));
        EXPECT_TRUE(Messages(INFO).empty()) << "no line for a text that comes of an exception";
    }
}

TEST_P(ErrorString, LogsFromTheFunctionItself)
{
    TextOf(m_app.handle, 0);
    for (const Line& line : LogLines()) {
        if (line.priority == INFO) {
            EXPECT_EQ(line.file, "lyn_service.cpp");
            EXPECT_EQ(line.function, "lyn_get_request_initiating_error_string");
        }
    }
}

TEST_P(ErrorString, ReportsNoStateAndTouchesNothing)
{
    simulator::ClearJournal();
    TextOf(m_app.handle, 0);
    EXPECT_TRUE(m_app.events.empty());
    EXPECT_TRUE(simulator::JournalText().empty());
}

INSTANTIATE_TEST_SUITE_P(Of, ErrorString, ::testing::Values("dummy", "mirroring", "nodlink", "kov"),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace lyn::test
