// SPDX-License-Identifier: Apache-2.0
#include "schedules/Script.h"

#include <cctype>
#include <sstream>
#include <stdexcept>

namespace lyn::schedules {
namespace {

std::vector<std::string> WordsOf(const std::string& line)
{
    std::istringstream stream(line.substr(0, line.find('#')));
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

void ReadStops(Script& script, const std::vector<std::string>& words)
{
    for (const std::string& word : words) {
        if (word != "locks" && word != "logs") {
            throw std::runtime_error("no such stop: " + word);
        }
        (word == "locks" ? script.stopsAtLocks : script.stopsAtLogs) = true;
    }
}

bool IsNumber(const std::string& word)
{
    return std::isdigit(static_cast<unsigned char>(word.front())) != 0;
}

void ReadMove(Script& script, const std::string& who, const std::vector<std::string>& words)
{
    if (who != "TV" && (who.size() != 1 || std::string("MABC").find(who) == std::string::npos)) {
        throw std::runtime_error("no such thread: " + who);
    }
    if (!words.empty() && !IsNumber(words.front())) {
        script.moves.push_back(ParseMove(who.front(), words));
        return;
    }
    const int times = words.empty() ? 1 : std::stoi(words.front());
    script.moves.insert(script.moves.end(), static_cast<std::size_t>(times), Move{who.front()});
}

void ReadLine(Script& script, const std::vector<std::string>& words)
{
    const std::vector<std::string> rest(words.begin() + 1, words.end());
    if (words[0] == "room") {
        for (const std::string& word : rest) {
            script.room.push_back(std::stoi(word));
        }
    } else if (words[0] == "workers") {
        script.workers = std::stoi(rest.at(0));
        if (script.workers < 0 || script.workers > kMostWorkers) {
            throw std::runtime_error("not so many workers");
        }
    } else if (words[0] == "story") {
        script.story = ServiceNumber(rest.at(0));
    } else if (words[0] == "stops") {
        ReadStops(script, rest);
    } else {
        ReadMove(script, words[0], rest);
    }
}

}  // namespace

std::string HeaderOf(const Script& script)
{
    std::string text = "room";
    for (const int behaviour : script.room) {
        text += " " + std::to_string(behaviour);
    }
    text += "\nworkers " + std::to_string(script.workers) + "\n";
    text += "story " + ServiceNames().at(static_cast<std::size_t>(script.story)) + "\n";
    if (script.stopsAtLocks || script.stopsAtLogs) {
        text += std::string("stops") + (script.stopsAtLocks ? " locks" : "") +
                (script.stopsAtLogs ? " logs" : "") + "\n";
    }
    return text;
}

std::string ToText(const Script& script)
{
    std::string text = HeaderOf(script);
    for (std::size_t i = 0; i < script.moves.size();) {
        const Move& move = script.moves[i];
        std::size_t times = 1;
        while (move.what == What::goOn && i + times < script.moves.size() && script.moves[i + times] == move) {
            ++times;
        }
        text += ToText(move) + (times > 1 ? " " + std::to_string(times) : "") + "\n";
        i += times;
    }
    return text;
}

Script ParseScript(const std::string& text)
{
    Script script;
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const std::vector<std::string> words = WordsOf(line);
        if (words.empty()) {
            continue;
        }
        try {
            ReadLine(script, words);
        } catch (const std::exception& e) {
            throw std::runtime_error("line " + std::to_string(number) + ": " + e.what());
        }
    }
    return script;
}

}  // namespace lyn::schedules
