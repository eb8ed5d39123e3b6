// SPDX-License-Identifier: Apache-2.0
//
// Stateless helpers, and the one flag that remembers the scan performance boost. Any thread.
#pragma once

#include <json/value.h>

#include <string>

namespace lyn::LynUtil {

/// "0a ff" for the bytes 0x0A 0xFF. A length below 1 ends in std::length_error.
std::string ConvertByteStreamToString(const char* data, int length);

/// Reads a feature value of the product. Throws LynExceptionOperationFailed "Fail to get fms key".
int GetIntFmsValue(const std::string& key);

/// True when the network speaker runs and Wi-Fi is on the 2.4 GHz band, or not connected.
bool IsAcmWorkOn2_4Ghz();

/// Switches the platform's LE scan boost, unless it is so already or would disturb the network speaker.
/// Failures are only logged; the next call tries again.
void SetBtPerformanceBoost(bool enable);

/// "Current time : " and the local time, on one line.
std::string GetCurTime();

/// Throws LynExceptionJsonParsing with the reader's text, and a standard exception for a nesting that is
/// deeper than the reader allows.
Json::Value StringToJson(const std::string& text);

/// One line, members in the order of their keys; logged as well.
std::string JsonToString(const Json::Value& value);

}  // namespace lyn::LynUtil
