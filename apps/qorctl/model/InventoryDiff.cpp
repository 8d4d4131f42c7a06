#include "model/InventoryDiff.h"

#include <map>
#include <utility>

#include "model/ObjectNames.h"

namespace qorctl {
namespace {

constexpr const char* STATE = "state";
constexpr const char* PROGRESS = "progress";

struct CFact {
    std::string what;
    CMeasure value;
};

// The state of an object comes first.
using CFacts = std::vector<CFact>;

struct CObject {
    std::string key;  // what it is found by in the other report
    CSubject subject;
    CFacts facts;
    CMeasure progress;
};

// A serial number of digits is a text all the same.
CMeasure TextFact(const CText& text) {
    return text ? std::make_optional(CQuantity{*text, std::nullopt}) : std::nullopt;
}

// "LD0 of RG0", "GHS"
CText UseOf(const CPhysicalDrive& drive) {
    if (!drive.use || !drive.group) {
        return drive.use;
    }
    return *drive.use + " of " + *drive.group;
}

CFacts FactsOf(const CController& controller) {
    return {{STATE, std::nullopt},
            {"battery", TextFact(controller.batteryStatus)},
            {"serial number", TextFact(controller.serial)}};
}

CFacts FactsOf(const CLogicalDrive& drive) {
    return {{STATE, TextFact(drive.state)}, {"RAID group", TextFact(drive.group)}};
}

CFacts FactsOf(const CPhysicalDrive& drive) {
    CFacts facts = {{STATE, TextFact(drive.statusDetail)},
                    {"use", TextFact(UseOf(drive))},
                    {"serial number", TextFact(drive.serial)},
                    {PROGRESS, drive.progress}};
    for (const CCounter& counter : COUNTERS) {
        facts.push_back({std::string(counter.noun), drive.*counter.value});
    }
    return facts;
}

CFacts FactsOf(const CPcieSsd& ssd) {
    return {{STATE, TextFact(ssd.status)}, {"serial number", TextFact(ssd.serial)}};
}

template <typename DEVICE>
std::string KeyOf(const DEVICE& device) {
    return ObjectName(device);
}

// A drive that was replaced is another one in the same place.
std::string KeyOf(const CPhysicalDrive& drive) {
    return DriveKey(drive);
}

template <typename DEVICE>
CMeasure ProgressOf(const DEVICE&) {
    return std::nullopt;
}

CMeasure ProgressOf(const CPhysicalDrive& drive) {
    return drive.progress;
}

std::string TwinText(size_t count) {
    return " (" + std::to_string(count) + ")";
}

void MarkTwin(CSubject& subject, size_t count) {
    if (subject.drive) {
        subject.drive->twin = count;
    }
    subject.name += TwinText(count);
}

// The objects of an inventory, each under a key of its own.
class CObjects {
public:
    explicit CObjects(const CInventory& inventory) {
        AddAll(inventory.controllers);
        AddAll(inventory.logicalDrives);
        AddAll(inventory.physicalDrives);
        AddAll(inventory.pcieSsds);
    }

    const std::vector<CObject>& All() const { return m_Objects; }

    // Null when there is none of the key.
    const CObject* Find(const std::string& key) const {
        const auto found = m_Positions.find(key);
        return found == m_Positions.end() ? nullptr : &m_Objects[found->second];
    }

private:
    template <typename DEVICE>
    void AddAll(const std::vector<DEVICE>& devices) {
        for (const DEVICE& device : devices) {
            CObject object = {KeyOf(device), SubjectOf(device), FactsOf(device),
                              ProgressOf(device)};
            const size_t count = ++m_Count[object.key];
            if (count > 1) {
                object.key += TwinText(count);
                MarkTwin(object.subject, count);
            }
            m_Positions[object.key] = m_Objects.size();
            m_Objects.push_back(std::move(object));
        }
    }

    std::vector<CObject> m_Objects;
    std::map<std::string, size_t> m_Positions;
    std::map<std::string, size_t> m_Count;
};

// Progress comes with a state and goes with it: that is no change of its own.
bool IsProgressOfNewState(const CObject& before, const CObject& after, size_t fact) {
    return after.facts[fact].what == PROGRESS &&
           before.facts.front().value != after.facts.front().value &&
           !(before.facts[fact].value && after.facts[fact].value);
}

CChange MakeChange(EChange kind, const CObject& object, size_t fact, const CMeasure& before,
                   const CMeasure& after) {
    const std::string& what = object.facts[fact].what;
    return {.kind = kind,
            .object = object.subject.name,
            .what = what,
            .before = before,
            .after = after,
            .drive = object.subject.drive,
            .progress = what == STATE && after ? object.progress : std::nullopt};
}

// Both lists are of the same kind of object: the same facts in the same order.
void CompareFacts(const CObject& before, const CObject& after, std::vector<CChange>& changes) {
    for (size_t i = 0; i < after.facts.size(); ++i) {
        if (before.facts[i].value != after.facts[i].value &&
            !IsProgressOfNewState(before, after, i)) {
            changes.push_back(MakeChange(EChange::CHANGED, after, i, before.facts[i].value,
                                         after.facts[i].value));
        }
    }
}

std::string Shown(const CMeasure& value) {
    return value ? value->text : "(not reported)";
}

std::string WithState(const char* event, const CMeasure& state) {
    return event + (state ? ", " + state->text : "");
}

std::string DescribeEvent(const CChange& change) {
    switch (change.kind) {
        case EChange::APPEARED:
            return WithState("appeared", change.after) + ProgressText(change.progress);
        case EChange::GONE:
            return WithState("gone", change.before);
        case EChange::CHANGED:
            break;
    }
    return (change.what == STATE ? "" : change.what + ' ') + Shown(change.before) + " -> " +
           Shown(change.after) + ProgressText(change.progress);
}

}  // namespace

std::vector<CChange> CompareInventories(const CInventory& before, const CInventory& after) {
    const CObjects older(before);
    const CObjects newer(after);
    std::vector<CChange> changes;
    for (const CObject& object : newer.All()) {
        const CObject* known = older.Find(object.key);
        if (known != nullptr) {
            CompareFacts(*known, object, changes);
        } else {
            changes.push_back(
                MakeChange(EChange::APPEARED, object, 0, std::nullopt, object.facts.front().value));
        }
    }
    for (const CObject& object : older.All()) {
        if (newer.Find(object.key) == nullptr) {
            changes.push_back(
                MakeChange(EChange::GONE, object, 0, object.facts.front().value, std::nullopt));
        }
    }
    return changes;
}

std::string DescribeChange(const CChange& change, ENameForm form) {
    return CSubject{change.object, change.drive}.Name(form) + ": " + DescribeEvent(change);
}

}  // namespace qorctl
