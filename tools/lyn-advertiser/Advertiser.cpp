// SPDX-License-Identifier: Apache-2.0
#include "Advertiser.h"

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace lyn::advertiser {

using linux_platform::Adapter;
using linux_platform::AdapterStatus;
using linux_platform::Bus;
using linux_platform::Setting;
using linux_platform::SettingsStore;
using linux_platform::SettingWatch;

namespace {

constexpr unsigned kRetryMs = 5000;
constexpr int kLongestInterval = 10240;  // what a controller can do

std::string TriggerKey(const std::string& feature)
{
    return "memory/org.nuvex.bleapp/" + feature + "_trigger";
}

/// In milliseconds; 0 is off, as is a key that nobody has written.
unsigned ReadInterval(const SettingsStore& store, const std::string& key)
{
    const Setting value = store.Read(key).value_or(0);
    const int* const interval = std::get_if<int>(&value);
    if (interval == nullptr || *interval < 0 || *interval > kLongestInterval) {
        throw std::runtime_error(key + ": " + (interval != nullptr ? std::to_string(*interval) : "a text") +
                                 " is no interval: 0 (off) to " + std::to_string(kLongestInterval) + " ms");
    }
    return static_cast<unsigned>(*interval);
}

}  // namespace

Advertiser::Advertiser(const Config& config, const SettingsStore& store, std::function<void(const News&)> tell)
    : m_store(store),
      m_tell(std::move(tell))
{
    for (const auto& [name, payload] : config) {
        Feature& feature = m_features[name];
        feature.payload = payload;
        feature.watch = std::make_unique<SettingWatch>(store.FileOf(TriggerKey(name)), [this] { Update(); });
    }
    Adapter::Instance().AddListener([this](const AdapterStatus&) { Update(); });
}

void Advertiser::Update()
{
    const AdapterStatus adapter = Adapter::Instance().Known();
    for (auto& [name, feature] : m_features) {
        UpdateFeature(name, feature, adapter);
    }
}

unsigned Advertiser::WantedInterval(const std::string& name, Feature& feature) const
{
    std::string complaint;
    unsigned interval = 0;
    try {
        interval = ReadInterval(m_store, TriggerKey(name));
    } catch (const std::exception& error) {
        complaint = error.what();
    }
    if (!complaint.empty() && complaint != feature.complaint) {
        m_tell({name, "failed", 0, complaint});
    }
    feature.complaint = complaint;
    return interval;
}

void Advertiser::UpdateFeature(const std::string& name, Feature& feature, const AdapterStatus& adapter)
{
    const unsigned wanted = adapter.powered ? WantedInterval(name, feature) : 0;
    if (wanted == feature.interval && (wanted == 0 || adapter.path == feature.adapter)) {
        return;
    }
    if (std::exchange(feature.advertisement, nullptr) != nullptr && wanted == 0) {
        m_tell({name, "off", 0, ""});
    }
    feature.interval = wanted;
    feature.adapter = adapter.path;
    const auto bus = Bus::System();
    if (wanted > 0 && bus != nullptr) {
        feature.advertisement = std::make_unique<Advertisement>(
            bus, adapter.path, name, feature.payload, wanted,
            [this, name, attempt = ++feature.attempt](const std::string& error) { OnNews(name, attempt, error); });
    }
}

void Advertiser::OnNews(const std::string& name, unsigned attempt, const std::string& error)
{
    Feature& feature = m_features.at(name);
    if (feature.advertisement == nullptr || feature.attempt != attempt) {
        return;  // of an advertisement that was taken back meanwhile
    }
    if (error.empty()) {
        m_tell({name, "on", feature.interval, ""});
        return;
    }
    m_tell({name, "failed", feature.interval, error});
    feature.advertisement = nullptr;
    feature.interval = 0;
    m_retry = linux_platform::Timer(kRetryMs, [this] { Update(); });
}

}  // namespace lyn::advertiser
