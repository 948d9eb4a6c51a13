#include "tools/commands/show_command.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>
#include <vector>

#include "engine/key_rules.h"
#include "project/project_key_record.h"
#include "tools/counted_text.h"
#include "tools/exit_status.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"
#include "tools/signature/byte_string.h"
#include "tools/signature/key_fingerprint.h"

namespace {

/// What to show of one entry.
struct ShownEntry {
    ProjectEntry entry;
    std::string meaning;  ///< empty for an id that the program ignores
    std::string value;    ///< hexadecimal digits, most significant first; empty if none are shown
    std::string remark;   ///< what there is to say of the value
};

/// The digits of so many bits, and of what there is above them.
std::string digitsOf(std::span<const std::uint64_t> words, std::uint64_t bits) {
    const ByteString bytes = bigEndianBytes(words, words.size_bytes());
    std::span<const std::uint8_t> shown = bytes;
    while (shown.size() > (bits + 7) / 8 && shown.front() == 0) {
        shown = shown.subspan(1);
    }
    return hexadecimalDigits(shown);
}

/// The number that the program takes from a key attribute; empty if it takes none.
std::string valueOf(const ProjectKeyRecord& key, ProjectAttributeId id) {
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
                       ? digitsOf(key.privateScalar->limbs, key.loadingOf(id).found)
                       : "";
    }
}

/// For each entry whether one before has its id.
std::vector<bool> repetitions(const std::vector<ProjectEntry>& entries) {
    std::vector<std::pair<ProjectAttributeId, std::uint32_t>> idsAndPlaces;
    idsAndPlaces.reserve(entries.size());
    for (std::uint32_t place = 0; place < entries.size(); ++place) {
        idsAndPlaces.emplace_back(entries[place].id, place);
    }
    std::sort(idsAndPlaces.begin(), idsAndPlaces.end());
    std::vector<bool> repeated(entries.size());
    for (std::size_t i = 1; i < idsAndPlaces.size(); ++i) {
        const auto& [id, place] = idsAndPlaces[i];
        repeated[place] = id == idsAndPlaces[i - 1].first;
    }
    return repeated;
}

/// Hands each entry to `show`, one after the other: there may be millions.
void showEntries(const ProjectFile& project, bool secret,
                 const std::function<void(const ShownEntry&)>& show) {
    ProjectKeyRecord key;
    key.loadFromAttributes(project);
    const std::vector<bool> repeated = repetitions(project.directory());
    for (std::size_t place = 0; place < repeated.size(); ++place) {
        ShownEntry next;
        next.entry = project.directory()[place];
        const ProjectAttributeId id = next.entry.id;
        next.meaning = attributeMeaning(id);
        const bool isScalar = id == privateScalarAttribute;
        if (repeated[place]) {
            next.remark = "not used: an entry before has this id";
        } else if (next.meaning.empty()) {
            next.remark = "not used: no attribute of the program";
        } else if (isScalar && !secret) {
            next.remark = "hidden: --secret shows it";
        } else {
            next.value = valueOf(key, id);
            const KeyReport report = isScalar ? key.privateScalarFault() : coordinateFault(key, id);
            next.remark = keyRefusal(report).value_or(Refusal{}).text;
        }
        show(next);
    }
}

constexpr std::size_t numberWidth = 10;

/// The text at the right end of a column.
std::string column(const std::string& text) {
    return std::string(numberWidth - text.size(), ' ') + text;
}

void printEntry(const ShownEntry& shown) {
    std::string text = column(std::to_string(shown.entry.id)) +
                       column(std::to_string(shown.entry.offset)) +
                       column(std::to_string(shown.entry.size)) + "  " +
                       (shown.meaning.empty() ? "-" : shown.meaning) + "\n";
    for (const std::string& line : {shown.value, shown.remark}) {
        if (!line.empty()) {
            text += std::string(3 * numberWidth + 2, ' ') + line + "\n";
        }
    }
    printText(text);
}

void printEntries(const ShowOptions& options, const ProjectFile& project) {
    const std::size_t count = project.directory().size();
    printLine(options.file + ": " + counted(count, "entry", "entries"));
    if (count != 0) {
        printText(column("id") + column("offset") + column("size") + "  meaning\n");
    }
    showEntries(project, options.secret, printEntry);
    if (const auto fingerprint = keyFingerprint(project)) {
        printText("fingerprint of the public key: " + *fingerprint + "\n");
    }
}

nlohmann::ordered_json asJson(const ShownEntry& shown) {
    nlohmann::ordered_json value;
    value["id"] = shown.entry.id;
    value["offset"] = shown.entry.offset;
    value["size"] = shown.entry.size;
    const auto add = [&value](const char* name, const std::string& member) {
        if (!member.empty()) {
            value[name] = member;
        }
    };
    add("meaning", shown.meaning);
    add("value", shown.value);
    add("remark", shown.remark);
    return value;
}

void printEntriesAsJson(const ShowOptions& options, const ProjectFile& project) {
    printText("{\"file\":" + jsonText(options.file));
    if (const auto fingerprint = keyFingerprint(project)) {
        printText(",\"fingerprint\":" + jsonText(*fingerprint));
    }
    printText(",\"entries\":[");
    const char* separator = "";
    showEntries(project, options.secret, [&separator](const ShownEntry& shown) {
        printText(separator + jsonText(asJson(shown)));
        separator = ",";
    });
    printText("]}\n");
}

}  // namespace

int showCommand(const ShowOptions& options) {
    const ProjectReading reading = readProject(options.file);
    if (reading.refusal.has_value()) {
        return reportFailure(options.file + ": " + reading.refusal->text);
    }
    (options.json ? printEntriesAsJson : printEntries)(options, reading.project);
    return exitDone;
}
