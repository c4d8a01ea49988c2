#include "generated_scenario.h"

#include "scenario_file.h"

namespace gen {

bool parseGenerated(const std::string& name, const std::string& text, sim::Scenario* scenario,
                    std::string* error) {
    std::vector<sim::Line> lines;
    sim::SourceError where;
    if (sim::loadScenario(name, text, &lines, &where) &&
        sim::parseScenario(lines, scenario, &where)) {
        return true;
    }
    *error = where.file + ":" + std::to_string(where.line) + ": " + where.reason;
    return false;
}

}  // namespace gen
