// SPDX-License-Identifier: Apache-2.0
#include "answers.h"

#include <algorithm>
#include <utility>

namespace lynphone {

using lyn::simulator::Answer;

Answers::Answers(std::vector<Answer> answers, bool perLink) : m_answers(std::move(answers)), m_perLink(perLink) {}

Answer Answers::Next(unsigned link)
{
    if (m_answers.empty()) {
        Answer silent;
        silent.kind = Answer::Kind::silent;
        return silent;
    }
    if (m_perLink && link != m_link) {
        m_used = 0;
    }
    m_link = link;
    return m_answers[std::min(m_used++, m_answers.size() - 1)];
}

}  // namespace lynphone
