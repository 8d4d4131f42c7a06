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
    CText value;
};

// The state of an object comes first.
using CFacts = std::vector<CFact>;

struct CObject {
    std::string name;
    CFacts facts;
};

CText TextOf(const CMeasure& measure) {
    return measure ? CText(measure->text) : std::nullopt;
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
            {"battery", controller.batteryStatus},
            {"serial number", controller.serial}};
}

CFacts FactsOf(const CLogicalDrive& drive) {
    return {{STATE, drive.state}, {"RAID group", drive.group}};
}

CFacts FactsOf(const CPhysicalDrive& drive) {
    CFacts facts = {
        {STATE, drive.statusDetail}, {"use", UseOf(drive)}, {"serial number", drive.serial}};
    facts.push_back({PROGRESS, TextOf(drive.progress)});
    for (const CCounter& counter : COUNTERS) {
        facts.push_back({std::string(counter.noun), TextOf(drive.*counter.value)});
    }
    return facts;
}

CFacts FactsOf(const CPcieSsd& ssd) {
    return {{STATE, ssd.status}, {"serial number", ssd.serial}};
}

// The objects of an inventory, each under a name of its own.
class CObjects {
public:
    explicit CObjects(const CInventory& inventory) {
        AddAll(inventory.controllers);
        AddAll(inventory.logicalDrives);
        AddAll(inventory.physicalDrives);
        AddAll(inventory.pcieSsds);
    }

    const std::vector<CObject>& All() const { return m_Objects; }

    // Null when there is none of the name.
    const CObject* Find(const std::string& name) const {
        const auto found = m_Positions.find(name);
        return found == m_Positions.end() ? nullptr : &m_Objects[found->second];
    }

private:
    template <typename DEVICE>
    void AddAll(const std::vector<DEVICE>& devices) {
        for (const DEVICE& device : devices) {
            std::string name = ObjectName(device);
            const size_t count = ++m_Count[name];
            if (count > 1) {
                name += " (" + std::to_string(count) + ")";
            }
            m_Positions[name] = m_Objects.size();
            m_Objects.push_back({std::move(name), FactsOf(device)});
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

// Both lists are of the same kind of object: the same facts in the same order.
void CompareFacts(const CObject& before, const CObject& after, std::vector<CChange>& changes) {
    for (size_t i = 0; i < after.facts.size(); ++i) {
        if (before.facts[i].value != after.facts[i].value &&
            !IsProgressOfNewState(before, after, i)) {
            changes.push_back({EChange::CHANGED, after.name, after.facts[i].what,
                               before.facts[i].value, after.facts[i].value});
        }
    }
}

std::string Shown(const CText& text) {
    return text.value_or("(not reported)");
}

std::string WithState(const char* event, const CText& state) {
    return event + (state ? ", " + *state : "");
}

std::string DescribeEvent(const CChange& change) {
    switch (change.kind) {
        case EChange::APPEARED:
            return WithState("appeared", change.after);
        case EChange::GONE:
            return WithState("gone", change.before);
        case EChange::CHANGED:
            break;
    }
    return (change.what == STATE ? "" : change.what + ' ') + Shown(change.before) + " -> " +
           Shown(change.after);
}

}  // namespace

std::vector<CChange> CompareInventories(const CInventory& before, const CInventory& after) {
    const CObjects older(before);
    const CObjects newer(after);
    std::vector<CChange> changes;
    for (const CObject& object : newer.All()) {
        const CObject* known = older.Find(object.name);
        if (known != nullptr) {
            CompareFacts(*known, object, changes);
        } else {
            changes.push_back(
                {EChange::APPEARED, object.name, STATE, std::nullopt, object.facts.front().value});
        }
    }
    for (const CObject& object : older.All()) {
        if (newer.Find(object.name) == nullptr) {
            changes.push_back(
                {EChange::GONE, object.name, STATE, object.facts.front().value, std::nullopt});
        }
    }
    return changes;
}

std::string DescribeChange(const CChange& change) {
    return change.object + ": " + DescribeEvent(change);
}

}  // namespace qorctl
