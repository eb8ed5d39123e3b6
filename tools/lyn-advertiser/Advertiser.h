// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "Advertisement.h"
#include "Config.h"
#include "bluez/Adapter.h"
#include "settings/SettingWatch.h"
#include "settings/SettingsStore.h"

namespace lyn::advertiser {

/// Something that happened to the advertisement of a feature.
struct News {
    std::string feature;
    std::string what;    ///< "on", "off" or "failed"
    unsigned interval;   ///< milliseconds; 0 when off
    std::string reason;  ///< why it failed
};

/// Keeps the TV's advertisements as the trigger settings say: 0 or nothing is off, another number the interval in
/// milliseconds; what is no interval is told once, and off. Again after bluetoothd or the adapter was away. On the
/// main context.
class Advertiser {
public:
    Advertiser(const Config& config, const linux_platform::SettingsStore& store,
               std::function<void(const News&)> tell);

    /// Looks at the settings and at the adapter and does what is to do.
    void Update();

private:
    struct Feature {
        Payload payload;
        std::unique_ptr<linux_platform::SettingWatch> watch;
        std::unique_ptr<Advertisement> advertisement;
        unsigned attempt = 0;  ///< the number of that advertisement
        unsigned interval = 0;
        std::string adapter;
        std::string complaint;  ///< what was told of a setting that is no interval
    };

    unsigned WantedInterval(const std::string& name, Feature& feature) const;
    void UpdateFeature(const std::string& name, Feature& feature, const linux_platform::AdapterStatus& adapter);
    void OnNews(const std::string& name, unsigned attempt, const std::string& error);

    const linux_platform::SettingsStore& m_store;
    std::function<void(const News&)> m_tell;
    std::map<std::string, Feature> m_features;
    linux_platform::Timer m_retry;
};

}  // namespace lyn::advertiser
