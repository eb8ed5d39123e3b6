// SPDX-License-Identifier: Apache-2.0
#include "Advert.h"

#include <utility>

namespace lyn::bench {
namespace {

char* DataOf(std::optional<Bytes>& packet)
{
    return packet ? reinterpret_cast<char*>(packet->data()) : nullptr;
}

int SizeOf(const std::optional<Bytes>& packet)
{
    return packet ? static_cast<int>(packet->size()) : 0;
}

}  // namespace

Advert::Advert(std::optional<Bytes> advertising, std::optional<Bytes> scanResponse)
    : m_advertising(std::move(advertising)),
      m_scanResponse(std::move(scanResponse))
{
    m_info.remote_address = m_address.data();
    m_info.rssi = -50;
    m_info.adv_data = DataOf(m_advertising);
    m_info.adv_data_len = SizeOf(m_advertising);
    m_info.scan_data = DataOf(m_scanResponse);
    m_info.scan_data_len = SizeOf(m_scanResponse);
}

Advert::Advert(const simulator::Phone& phone) : Advert(phone.advertising, phone.scanResponse) {}

}  // namespace lyn::bench
