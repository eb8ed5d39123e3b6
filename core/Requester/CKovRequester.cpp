// SPDX-License-Identifier: Apache-2.0
#include "Requester/CKovRequester.h"

#include <utility>

#include "Requester/ExchangeData/CKovExchangeData.h"

namespace lyn {
namespace {

constexpr const char* SERVICE_UUID = "1e5ed7a3-9e92-41c1-af60-6a15643dfb34";
constexpr const char* CHARACTERISTIC_UUID = "fc4e4003-dd1f-4896-bc77-35a759445f69";

}  // namespace

CKovRequester::CKovRequester() : CKovRequester(nullptr) {}

CKovRequester::CKovRequester(RequestResultCb requestResultCb)
    : CRequester(std::move(requestResultCb), SERVICE_UUID, CHARACTERISTIC_UUID)
{
}

std::string CKovRequester::BuildData(const Exchange& /*exchange*/)
{
    CKovExchangeData exchangeData;
    return exchangeData.GetExchangeData("control");
}

}  // namespace lyn
