#include "tools/commands/show_command.h"

#include <cstdint>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <set>
#include <span>
#include <sstream>
#include <vector>

#include "project/project_key_record.h"
#include "tools/counted_text.h"
#include "tools/exit_status.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"
#include "tools/signature/byte_string.h"

namespace {

/// What to show of one entry.
struct ShownEntry {
    ProjectEntry entry;
    std::string meaning;  ///< empty for an id that the program ignores
    std::string value;    ///< hexadecimal digits, most significant first; empty if none are shown
    std::string remark;   ///< what there is to say of the value
};

/// The digits of so many bits, and of what the last 32-bit word holds above them.
std::string digitsOf(std::span<const std::uint64_t> words, std::uint64_t bits) {
    const ByteString bytes = bigEndianBytes(words, (bits + 31) / 32 * 4);
    std::span<const std::uint8_t> shown = bytes;
    while (shown.size() > (bits + 7) / 8 && shown.front() == 0) {
        shown = shown.subspan(1);
    }
    return hexadecimalDigits(shown);
}

/// The number that the program takes from a key attribute; empty if it takes none.
std::string valueOf(const ProjectFile& project, const ProjectKeyRecord& key,
                    ProjectAttributeId id) {
    switch (id) {
        case basePointXAttribute:
            return digitsOf(key.basePointX.words, key.basePointX.degree);
        case basePointYAttribute:
            return digitsOf(key.basePointY.words, key.basePointY.degree);
        case publicPointXAttribute:
            return digitsOf(key.publicPointX.words, key.publicPointX.degree);
        case publicPointYAttribute:
            return digitsOf(key.publicPointY.words, key.publicPointY.degree);
        default:
            return key.privateScalar.has_value()
                       ? digitsOf(key.privateScalar->limbs, statedBits(project, id))
                       : "";
    }
}

std::vector<ShownEntry> shownEntries(const ProjectReading& reading, bool secret) {
    ProjectKeyRecord key;
    key.loadFromAttributes(reading.project);
    std::set<ProjectAttributeId> seen;
    std::vector<ShownEntry> shown;
    for (const ProjectEntry& entry : reading.project.directory()) {
        ShownEntry& next = shown.emplace_back();
        next.entry = entry;
        next.meaning = attributeMeaning(entry.id);
        const bool isScalar = entry.id == privateScalarAttribute;
        if (!seen.insert(entry.id).second) {
            next.remark = "not used: an entry before has this id";
        } else if (next.meaning.empty()) {
            next.remark = "not used: no attribute of the program";
        } else if (isScalar && !secret) {
            next.remark = "hidden: --secret shows it";
        } else {
            next.value = valueOf(reading.project, key, entry.id);
            next.remark = (isScalar ? scalarRefusal(reading.project)
                                    : coordinateRefusal(reading.project, entry.id))
                              .value_or(Refusal{})
                              .text;
        }
    }
    return shown;
}

void printEntries(const std::string& file, const std::vector<ShownEntry>& entries) {
    constexpr int numberWidth = 10;
    printLine(file + ": " + counted(entries.size(), "entry", "entries"));
    std::ostringstream text;
    if (!entries.empty()) {
        text << std::setw(numberWidth) << "id" << std::setw(numberWidth) << "offset"
             << std::setw(numberWidth) << "size"
             << "  meaning\n";
    }
    const std::string indent(3 * numberWidth + 2, ' ');
    for (const ShownEntry& shown : entries) {
        text << std::setw(numberWidth) << shown.entry.id << std::setw(numberWidth)
             << shown.entry.offset << std::setw(numberWidth) << shown.entry.size << "  "
             << (shown.meaning.empty() ? "-" : shown.meaning) << "\n";
        for (const std::string& line : {shown.value, shown.remark}) {
            text << (line.empty() ? "" : indent + line + "\n");
        }
    }
    printText(text.str());
}

void printEntriesAsJson(const std::string& file, const std::vector<ShownEntry>& entries) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const ShownEntry& shown : entries) {
        nlohmann::ordered_json value{
            {"id", shown.entry.id}, {"offset", shown.entry.offset}, {"size", shown.entry.size}};
        for (const auto& [name, member] :
             {std::pair("meaning", shown.meaning), std::pair("value", shown.value),
              std::pair("remark", shown.remark)}) {
            if (!member.empty()) {
                value[name] = member;
            }
        }
        list.push_back(value);
    }
    printJson({{"file", file}, {"entries", list}});
}

}  // namespace

int showCommand(const ShowOptions& options) {
    const ProjectReading reading = readProject(options.file);
    if (reading.refusal.has_value()) {
        return reportFailure(options.file + ": " + reading.refusal->text);
    }
    const std::vector<ShownEntry> entries = shownEntries(reading, options.secret);
    (options.json ? printEntriesAsJson : printEntries)(options.file, entries);
    return exitDone;
}
