// SPDX-License-Identifier: Apache-2.0
#include "Common/LynException.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "support/LogLines.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"
// After the above: it needs the log macros.
#include "Common/Failure.h"

namespace lyn::test {
namespace {

struct Kind {
    std::string name;
    lyn_error_e code;
    const std::type_info* type;
    std::function<void(const std::string&)> raise;
};

template <typename E>
Kind MakeKind(const std::string& name, lyn_error_e code)
{
    static_assert(std::is_convertible_v<E*, LynException*>, "derives publicly from the base");
    static_assert(std::is_convertible_v<E*, std::exception*>);
    static_assert(sizeof(E) == sizeof(LynException), "adds no field");
    static_assert(std::is_constructible_v<E, const std::string&>);
    return {name, code, &typeid(E), [](const std::string& message) { throw E(message); }};
}

std::vector<Kind> AllKinds()
{
    return {MakeKind<LynExceptionInternal>("Internal", LYN_ERROR_INTERNAL),
            MakeKind<LynExceptionAlreadyDone>("AlreadyDone", LYN_ERROR_ALREADY_DONE),
            MakeKind<LynExceptionInvalidHandle>("InvalidHandle", LYN_ERROR_INVALID_HANDLE),
            MakeKind<LynExceptionInvalidParam>("InvalidParam", LYN_ERROR_INVALID_PARAMETER),
            MakeKind<LynExceptionRetry>("Retry", LYN_ERROR_INTERNAL),
            MakeKind<LynExceptionJsonParsing>("JsonParsing", LYN_ERROR_INVALID_PARAMETER),
            MakeKind<LynExceptionOperationFailed>("OperationFailed", LYN_ERROR_OPERATION_FAILED),
            MakeKind<LynExceptionNotValidDevice>("NotValidDevice", LYN_ERROR_INTERNAL),
            MakeKind<LynExceptionInvalidState>("InvalidState", LYN_ERROR_INVALID_STATE),
            MakeKind<LynExceptionNotSupported>("NotSupported", LYN_ERROR_NOT_SUPPORTED)};
}

TEST(ErrorCodes, HaveTheirFixedValues)
{
    EXPECT_EQ(LYN_ERROR_NONE, 0);
    EXPECT_EQ(LYN_ERROR_INTERNAL, 2);
    EXPECT_EQ(LYN_ERROR_INVALID_STATE, 3);
    EXPECT_EQ(LYN_ERROR_INVALID_HANDLE, 4);
    EXPECT_EQ(LYN_ERROR_INVALID_PARAMETER, 5);
    EXPECT_EQ(LYN_ERROR_OPERATION_FAILED, 6);
    EXPECT_EQ(LYN_ERROR_ALREADY_DONE, 7);
    EXPECT_EQ(LYN_ERROR_NOT_SUPPORTED, 8);
}

TEST(Exceptions, AreCaughtByTheirBaseWithTheCodeOfTheirClassAndTheMessageOfTheThrow)
{
    for (const Kind& kind : AllKinds()) {
        SCOPED_TRACE(kind.name);
        bool caught = false;
        try {
            kind.raise("what went wrong");
        } catch (const LynException& e) {
            caught = true;
            EXPECT_EQ(e.GetCode(), kind.code);
            EXPECT_STREQ(e.what(), "what went wrong");
            EXPECT_TRUE(typeid(e) == *kind.type) << "the dynamic type is lost";
        }
        EXPECT_TRUE(caught);
    }
}

TEST(Exceptions, AreCaughtAsStandardExceptionsWithTheirMessage)
{
    for (const Kind& kind : AllKinds()) {
        SCOPED_TRACE(kind.name);
        bool caught = false;
        try {
            kind.raise("50 % of it");
        } catch (const std::exception& e) {
            caught = true;
            EXPECT_STREQ(e.what(), "50 % of it");
        }
        EXPECT_TRUE(caught);
    }
}

TEST(Exceptions, AreToldApartByTheirClassEvenWhenTheyShareACode)
{
    const std::vector<Kind> kinds = AllKinds();
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        for (std::size_t j = i + 1; j < kinds.size(); ++j) {
            EXPECT_FALSE(*kinds[i].type == *kinds[j].type) << kinds[i].name << " and " << kinds[j].name;
        }
    }
}

TEST(Exceptions, CopyTheirMessage)
{
    std::string message = "a message too long to be kept inside the string object itself";
    const LynExceptionInternal exception(message);
    message.assign(message.size(), '#');
    EXPECT_STREQ(exception.what(), "a message too long to be kept inside the string object itself");
}

TEST(Exceptions, GiveTheSameMessagePointerAsLongAsTheyLive)
{
    const LynExceptionInvalidState exception("Invalid State");
    const char* const first = exception.what();
    EXPECT_EQ(exception.what(), first);
    EXPECT_STREQ(first, "Invalid State");
}

TEST(Exceptions, KeepMessageAndCodeWhenTheyAreDeletedThroughTheBase)
{
    const std::unique_ptr<std::exception> exception = std::make_unique<LynExceptionNotSupported>(
        "a message too long to be kept inside the string object itself");
    EXPECT_STREQ(exception->what(), "a message too long to be kept inside the string object itself");
}

TEST(Exceptions, TakeAnEmptyMessage)
{
    EXPECT_STREQ(LynExceptionInternal("").what(), "");
}

TEST(Exceptions, NameAnInvalidParameterWhenTheyAreNotTold)
{
    const LynExceptionInvalidParam exception;
    EXPECT_STREQ(exception.what(), "Invalid Parameter exception");
    EXPECT_EQ(exception.GetCode(), LYN_ERROR_INVALID_PARAMETER);
}

TEST(Exceptions, OfTheBaseCarryTheCodeThatTheyAreGiven)
{
    const LynException exception("anything", LYN_ERROR_ALREADY_DONE);
    EXPECT_EQ(exception.GetCode(), LYN_ERROR_ALREADY_DONE);
    EXPECT_STREQ(exception.what(), "anything");
}

class Failure : public SimulatedTv {};

void FailHere(const std::string& message)
{
    LogAndThrow<LynExceptionJsonParsing>(message);
}

TEST_F(Failure, IsLoggedOnceAtErrorInTheNameOfTheFunctionThatFailsAndThenThrown)
{
    EXPECT_EQ(ThrownBy<LynExceptionJsonParsing>([] { FailHere("no 100 %s of it"); }), "no 100 %s of it");

    const std::vector<Line> lines = LogLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].priority, ERROR);
    EXPECT_EQ(lines[0].file, "exception_test.cpp");
    EXPECT_EQ(lines[0].function, "FailHere");
    EXPECT_EQ(lines[0].message, "no 100 %s of it");
}

}  // namespace
}  // namespace lyn::test
