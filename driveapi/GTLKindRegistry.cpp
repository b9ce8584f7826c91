#include "driveapi/GTLKindRegistry.h"

#include "driveapi/GTLDriveKinds.h"

#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace quenby::gtlKinds {

namespace {

struct Registry {
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    Registry() {
        for (const GTLDriveKind& entry : gtlDriveKinds())
            classes.emplace(entry.kind, &entry.objectClass());
    }

    std::shared_mutex mutex;
    std::unordered_map<std::string, const GTLClass*, Hash, std::equal_to<>> classes;
};

Registry& registry() {
    static Registry registry;
    return registry;
}

} // namespace

const GTLClass* classForKind(std::string_view kind) {
    Registry& all = registry();
    const std::shared_lock lock(all.mutex);
    const auto found = all.classes.find(kind);
    return found == all.classes.end() ? nullptr : found->second;
}

void registerClassForKind(const GTLClass& objectClass, std::string_view kind) {
    Registry& all = registry();
    const std::unique_lock lock(all.mutex);
    all.classes.insert_or_assign(std::string(kind), &objectClass);
}

} // namespace quenby::gtlKinds
