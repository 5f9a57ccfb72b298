// The engine on small questions whose number of paths is known.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include <functional>
#include <vector>

#include "explorer/engine/coverage.h"
#include "explorer/engine/decision_list.h"
#include "explorer/engine/diagram.h"
#include "tests/environment.h"

using explorer::BigNumber;
using explorer::Choices;
using explorer::Coverage;
using explorer::Diagram;
using explorer::DiagramBuilder;
using explorer::NodeId;

namespace {

struct Explored {
    int paths = 0;
    Coverage coverage;
    Diagram diagram;
    NodeId root = explorer::NONE;
    bool diverged = false;
};

void Explore(Explored& result, const std::function<int(Choices&)>& question) {
    Choices choices;
    DiagramBuilder builder(result.diagram);
    do {
        choices.Restart();
        const int outcome = question(choices);
        ++result.paths;
        result.coverage.Add(choices.Path(), choices.Depth());
        result.diverged = result.diverged || choices.Diverged();
        builder.Add(choices, outcome);
    } while (choices.Advance());
    result.root = builder.Root();
}

}  // namespace

TEST(Engine, AQuestionThatReadsNothingHasOnePath) {
    Explored result;
    Explore(result, [](Choices&) { return 7; });
    EXPECT_EQ(result.paths, 1);
    EXPECT_EQ(result.coverage.States(), BigNumber(1));
    EXPECT_TRUE(result.coverage.IsComplete());
    EXPECT_EQ(result.diagram[result.root].outcome, 7);
}

TEST(Engine, IndependentInputsMultiply) {
    Explored result;
    Explore(result, [](Choices& choices) {
        return choices.Choose(0, 2) + choices.Choose(1, 3) + choices.Choose(2, 5);
    });
    EXPECT_EQ(result.paths, 30);
    EXPECT_EQ(result.coverage.States(), BigNumber(30));
    EXPECT_TRUE(result.coverage.IsComplete());
}

TEST(Engine, AnInputThatIsNotReadIsNotBranchedOn) {
    Explored result;
    // The second input only matters when the first is 0: 3 + 2 paths for 3 x 3 states.
    Explore(result,
            [](Choices& choices) { return choices.Choose(0, 3) == 0 ? choices.Choose(1, 3) : 9; });
    EXPECT_EQ(result.paths, 5);
    EXPECT_EQ(result.coverage.States(), BigNumber(9));
    EXPECT_EQ(result.coverage.Covered(), BigNumber(9));
}

TEST(Engine, DifferentBranchesMayReadDifferentInputs) {
    Explored result;
    Explore(result, [](Choices& choices) {
        return choices.Choose(0, 2) == 0 ? choices.Choose(1, 4) : 10 + choices.Choose(2, 6);
    });
    EXPECT_EQ(result.paths, 10);
    EXPECT_EQ(result.coverage.States(), BigNumber(48));
    EXPECT_TRUE(result.coverage.IsComplete());
}

TEST(Engine, AMissingPathIsNoticed) {
    Coverage coverage;
    const explorer::Decision first[] = {{0, 0, 3}};
    const explorer::Decision second[] = {{0, 1, 3}};
    coverage.Add(first, 1);
    coverage.Add(second, 1);
    EXPECT_FALSE(coverage.IsComplete());
    const explorer::Decision third[] = {{0, 2, 3}};
    coverage.Add(third, 1);
    EXPECT_TRUE(coverage.IsComplete());
    coverage.Add(third, 1);
    EXPECT_FALSE(coverage.IsComplete()) << "a path visited twice counts twice";
}

TEST(Engine, AQuestionThatDependsOnMoreThanItsInputsIsNoticed) {
    Explored result;
    int calls = 0;
    Explore(result, [&calls](Choices& choices) {
        choices.Choose(calls++ == 0 ? 0 : 1, 2);
        return 0;
    });
    EXPECT_TRUE(result.diverged);
}

TEST(BigNumber, IsPrintedInGroupsOfThree) {
    EXPECT_EQ(BigNumber(0).ToString(), "0");
    EXPECT_EQ(BigNumber(999).ToString(), "999");
    EXPECT_EQ(BigNumber(1000).ToString(), "1,000");
    BigNumber number(1);
    for (int i = 0; i < 30; ++i) {
        number.Multiply(10);
    }
    EXPECT_EQ(number.ToString(), "1,000,000,000,000,000,000,000,000,000,000");
    number.Add(BigNumber(1));
    EXPECT_EQ(number.ToString(), "1,000,000,000,000,000,000,000,000,000,001");
}

TEST(Diagram, AnInputThatDoesNotMatterIsNotAsked) {
    Explored result;
    Explore(result, [](Choices& choices) {
        choices.Choose(0, 3);
        return choices.Choose(1, 2);
    });
    EXPECT_EQ(result.paths, 6);
    EXPECT_EQ(OccurringValues(result.diagram, result.root),
              (std::map<int, std::set<int>>{{1, {0, 1}}}));
}

TEST(Diagram, TheOrderOfReadingDoesNotChangeTheOrderedDiagram) {
    Explored ab;
    Explore(ab, [](Choices& choices) {
        return choices.Choose(0, 2) == 1 && choices.Choose(1, 2) == 1;
    });
    // The same answers, the inputs read the other way round, into the same diagram.
    Choices choices;
    DiagramBuilder builder(ab.diagram);
    do {
        choices.Restart();
        builder.Add(choices, choices.Choose(1, 2) == 1 && choices.Choose(0, 2) == 1 ? 1 : 0);
    } while (choices.Advance());
    EXPECT_NE(ab.root, builder.Root());
    const std::vector<int> rank = {0, 1};
    EXPECT_EQ(ab.diagram.Ordered(ab.root, rank), ab.diagram.Ordered(builder.Root(), rank));
}

TEST(Diagram, RowsAreExactAndCannotBePutTogether) {
    Explored result;
    // 1 when the first is 2, or the second is 0.
    Explore(result, [](Choices& choices) {
        return choices.Choose(0, 4) == 2 ? 1 : choices.Choose(1, 3) == 0 ? 1 : 0;
    });
    const std::vector<explorer::Row> rows = explorer::RowsOf(result.diagram, result.root);
    EXPECT_EQ(rows.size(), 3U);
    for (int a = 0; a < 4; ++a) {
        for (int b = 0; b < 3; ++b) {
            int matches = 0;
            for (const explorer::Row& row : rows) {
                const auto holds = [&row](int input, int value) {
                    const auto own = row.conditions.find(input);
                    return own == row.conditions.end() || own->second.count(value) != 0;
                };
                if (holds(0, a) && holds(1, b)) {
                    ++matches;
                    EXPECT_EQ(row.outcome, a == 2 || b == 0 ? 1 : 0) << a << ' ' << b;
                }
            }
            EXPECT_EQ(matches, 1) << "state " << a << ' ' << b;
        }
    }
}

// What the list says of a state: its first row that fits.
explorer::OutcomeId Decided(const explorer::DecisionList& list, const std::vector<int>& state) {
    for (const explorer::ListRow& row : list) {
        const bool fits =
            std::all_of(row.conditions.begin(), row.conditions.end(), [&](const auto& condition) {
                return condition.second.count(state[static_cast<std::size_t>(condition.first)]) !=
                       0;
            });
        if (fits) {
            return row.outcome;
        }
    }
    return explorer::NONE;
}

TEST(DecisionList, OfGuardsHasARowForEachAndTheRestLast) {
    Explored result;
    // if (a == 0 || b == 1) 0, else if (c == 2) 1, else 2.
    Explore(result, [](Choices& choices) {
        return choices.Choose(0, 3) == 0   ? 0
               : choices.Choose(1, 3) == 1 ? 0
               : choices.Choose(2, 4) == 2 ? 1
                                           : 2;
    });
    const std::vector<int> rank = {0, 1, 2};
    const explorer::DecisionList list =
        DecisionListOf(result.diagram, result.diagram.Ordered(result.root, rank), rank);
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[0].conditions, (std::map<int, std::set<int>>{{0, {0}}}));
    EXPECT_EQ(list[1].conditions, (std::map<int, std::set<int>>{{1, {1}}}));
    ASSERT_EQ(list[2].conditions.size(), 1U);
    EXPECT_EQ(list[2].conditions.count(2), 1U);
    EXPECT_TRUE(list[3].conditions.empty());
    EXPECT_EQ(list[2].outcome + list[3].outcome, 1 + 2);
}

TEST(DecisionList, DecidesAsTheDiagramInEveryStateOfRulesMadeByChance) {
    constexpr int kInputs = 5;
    constexpr int kValues = 3;
    std::mt19937 chance(Seed());
    SCOPED_TRACE(SeedNote());
    for (int rule = 0; rule < 24; ++rule) {
        SCOPED_TRACE(rule);
        // Mostly one outcome, so that there is something to put together.
        std::vector<int> outcomes(243);
        for (int& outcome : outcomes) {
            outcome = static_cast<int>(chance() % 12) - 9 + rule % 8;
            outcome = std::max(outcome, 0);
        }
        // Some combinations never occur.
        const unsigned gap = chance() % 2 != 0 ? 7 : 1000;
        Explored result;
        std::vector<explorer::NodeId> level;
        for (std::size_t state = 0; state < outcomes.size(); ++state) {
            level.push_back(state % gap == gap - 1 ? explorer::NONE
                                                   : result.diagram.Leaf(outcomes[state]));
        }
        for (int input = kInputs - 1; input >= 0; --input) {
            std::vector<explorer::NodeId> above;
            for (std::size_t i = 0; i < level.size(); i += kValues) {
                above.push_back(
                    result.diagram.Branch(input, {level[i], level[i + 1], level[i + 2]}));
            }
            level = above;
        }
        const std::vector<int> rank = {0, 1, 2, 3, 4};
        explorer::DecisionList list = DecisionListOf(result.diagram, level.front(), rank);
        for (std::size_t state = 0; state < outcomes.size(); ++state) {
            std::vector<int> values(kInputs);
            std::size_t rest = state;
            for (int input = kInputs - 1; input >= 0; --input) {
                values[static_cast<std::size_t>(input)] = static_cast<int>(rest % kValues);
                rest /= kValues;
            }
            EXPECT_TRUE(state % gap == gap - 1 || Decided(list, values) == outcomes[state])
                << state;
        }
        EXPECT_TRUE(Agrees(result.diagram, level.front(), rank, list));
        EXPECT_TRUE(list.back().conditions.empty());
        // A row that is missing or wrong is seen.
        list.back().outcome += 1;
        EXPECT_FALSE(Agrees(result.diagram, level.front(), rank, list));
        list.pop_back();
        EXPECT_FALSE(Agrees(result.diagram, level.front(), rank, list));
    }
}
