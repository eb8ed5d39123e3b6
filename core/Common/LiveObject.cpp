// SPDX-License-Identifier: Apache-2.0
#include "Common/LiveObject.h"

#include <cstdint>
#include <unordered_map>

namespace lyn {
namespace {

struct Table {
    std::recursive_mutex mutex;
    std::unordered_map<std::uintptr_t, void*> objects;
    std::uintptr_t last = 0;
};

// Never destroyed: the service that lives at process exit still needs it.
Table& LiveTable()
{
    static auto* const table = new Table;
    return *table;
}

}  // namespace

std::unique_lock<std::recursive_mutex> LockLiveObjects()
{
    return std::unique_lock(LiveTable().mutex);
}

LiveToken::LiveToken(void* object)
{
    const auto lock = LockLiveObjects();
    Table& table = LiveTable();
    const std::uintptr_t number = ++table.last;
    table.objects.emplace(number, object);
    m_UserData = reinterpret_cast<void*>(number);  // NOLINT(performance-no-int-to-ptr): a number on purpose
}

LiveToken::~LiveToken()
{
    const auto lock = LockLiveObjects();
    LiveTable().objects.erase(reinterpret_cast<std::uintptr_t>(m_UserData));
}

void* LiveToken::Find(void* userData)
{
    const auto& objects = LiveTable().objects;
    const auto found = objects.find(reinterpret_cast<std::uintptr_t>(userData));
    return found != objects.end() ? found->second : nullptr;
}

}  // namespace lyn
