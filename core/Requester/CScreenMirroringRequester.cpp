// SPDX-License-Identifier: Apache-2.0
#include "Requester/CScreenMirroringRequester.h"

#include <utility>

#include "Requester/ExchangeData/CScreenMirroringExchangeData.h"

namespace lyn {
namespace {

constexpr const char* SERVICE_UUID = "f7608236-13bd-4a99-bbcd-9426bccb6c24";
constexpr const char* CHARACTERISTIC_UUID = "9be85432-b1db-416c-9e1c-d6d381305337";

}  // namespace

CScreenMirroringRequester::CScreenMirroringRequester() : CScreenMirroringRequester(nullptr) {}

CScreenMirroringRequester::CScreenMirroringRequester(RequestResultCb requestResultCb)
    : CRequester(std::move(requestResultCb), SERVICE_UUID, CHARACTERISTIC_UUID)
{
}

std::string CScreenMirroringRequester::BuildData(const Exchange& exchange)
{
    CScreenMirroringExchangeData exchangeData;
    exchangeData.SetExtraData(GetExtraData(exchange));
    return exchangeData.GetExchangeData("control");
}

}  // namespace lyn
