// Reads and writes the registry value with the last targets.
#include "dialog/target_store.h"

#include <windows.h>

namespace
{
constexpr DWORD longest_value = 0x10000; // bytes; far more than ten targets need

std::string read_value(HKEY key)
{
    std::string value(longest_value, '\0');
    DWORD bytes = longest_value;
    DWORD type = REG_NONE;
    const LSTATUS status =
        RegQueryValueExA(key, target_store_value, nullptr, &type, reinterpret_cast<BYTE *>(value.data()), &bytes);
    if (status != ERROR_SUCCESS || type != REG_MULTI_SZ) return {};
    value.resize(bytes);
    return value;
}
}

LastTargets load_targets()
{
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, target_store_key, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return {};
    const std::string value = read_value(key);
    RegCloseKey(key);
    return unpack_targets(value);
}

bool save_targets(const LastTargets &targets)
{
    const std::string packed = pack_targets(targets);
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, target_store_key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr) !=
        ERROR_SUCCESS) {
        return false;
    }
    const LSTATUS status =
        RegSetValueExA(key, target_store_value, 0, REG_MULTI_SZ, reinterpret_cast<const BYTE *>(packed.data()),
                       static_cast<DWORD>(packed.size()));
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}
