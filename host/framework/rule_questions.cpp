#include "host/framework/rule_questions.hpp"

#include "processor/host/rule_cache.hpp"

#include <algorithm>

namespace framework {

namespace {

// Names nearly always come from the same literals, whose text need not be compared then.
bool is_same(QString const& left, QString const& right) {
    return left.constData() == right.constData() || left == right;
}

}  // namespace

void RULE_QUESTION_RECORDER::rule_was_read(QString const& path, QString const& rule, QString const& property,
                                           QVariant const& value) {
    auto const asks_this = [&](auto const& known) {
        return is_same(known.property, property) && is_same(known.rule, rule);
    };
    if (path.isEmpty()) {
        if (std::none_of(questions_.globals.begin(), questions_.globals.end(), asks_this))
            questions_.globals.push_back({{}, rule, property, value});
        return;
    }
    auto topic = questions_.by_topic.find(RULE_TOPIC::current());
    if (topic == questions_.by_topic.end())
        topic = questions_.by_topic.emplace(RULE_TOPIC::current(), std::vector<RULE_QUESTIONS::QUESTION>()).first;
    // A processor asks some dozens of questions, over and over.
    if (std::none_of(topic->second.begin(), topic->second.end(), asks_this))
        topic->second.push_back({rule, property});
}

}  // namespace framework
