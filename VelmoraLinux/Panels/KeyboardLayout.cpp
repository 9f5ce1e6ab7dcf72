#include "KeyboardLayout.h"

#include <sys/mman.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr std::uint32_t offsetOfXkb = 8; // Between the kernel's numbers of keys and those of xkb.
constexpr std::size_t largestLayout = 4 << 20;

constexpr auto keys = std::to_array<std::pair<xkb_keysym_t, Qt::Key>>({
    {XKB_KEY_Escape, Qt::Key_Escape},
    {XKB_KEY_Tab, Qt::Key_Tab},
    {XKB_KEY_ISO_Left_Tab, Qt::Key_Backtab},
    {XKB_KEY_Return, Qt::Key_Return},
    {XKB_KEY_KP_Enter, Qt::Key_Enter},
    {XKB_KEY_BackSpace, Qt::Key_Backspace},
    {XKB_KEY_Delete, Qt::Key_Delete},
    {XKB_KEY_Home, Qt::Key_Home},
    {XKB_KEY_End, Qt::Key_End},
    {XKB_KEY_Left, Qt::Key_Left},
    {XKB_KEY_Up, Qt::Key_Up},
    {XKB_KEY_Right, Qt::Key_Right},
    {XKB_KEY_Down, Qt::Key_Down},
    {XKB_KEY_Prior, Qt::Key_PageUp},
    {XKB_KEY_Next, Qt::Key_PageDown},
    {XKB_KEY_KP_Home, Qt::Key_Home},
    {XKB_KEY_KP_End, Qt::Key_End},
    {XKB_KEY_KP_Left, Qt::Key_Left},
    {XKB_KEY_KP_Up, Qt::Key_Up},
    {XKB_KEY_KP_Right, Qt::Key_Right},
    {XKB_KEY_KP_Down, Qt::Key_Down},
    {XKB_KEY_Shift_L, Qt::Key_Shift},
    {XKB_KEY_Shift_R, Qt::Key_Shift},
    {XKB_KEY_Control_L, Qt::Key_Control},
    {XKB_KEY_Control_R, Qt::Key_Control},
    {XKB_KEY_Alt_L, Qt::Key_Alt},
    {XKB_KEY_Alt_R, Qt::Key_Alt},
});

constexpr auto modifierNames = std::to_array<std::pair<const char *, Qt::KeyboardModifier>>({
    {XKB_MOD_NAME_SHIFT, Qt::ShiftModifier},
    {XKB_MOD_NAME_CTRL, Qt::ControlModifier},
    {XKB_MOD_NAME_ALT, Qt::AltModifier},
    {XKB_MOD_NAME_LOGO, Qt::MetaModifier},
});

} // namespace

KeyboardLayout::KeyboardLayout()
    : context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS))
{
}

KeyboardLayout::~KeyboardLayout()
{
    xkb_state_unref(state_);
    xkb_keymap_unref(keymap_);
    xkb_context_unref(context_);
}

void KeyboardLayout::load(const FileDescriptor &file, std::size_t size)
{
    xkb_state_unref(std::exchange(state_, nullptr));
    xkb_keymap_unref(std::exchange(keymap_, nullptr));
    if (context_ == nullptr || size == 0 || size > largestLayout)
        return;
    void *text = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (text == MAP_FAILED)
        return;
    keymap_ = xkb_keymap_new_from_buffer(context_, static_cast<const char *>(text), size - 1,
                                         XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
    ::munmap(text, size);
    if (keymap_ != nullptr)
        state_ = xkb_state_new(keymap_);
}

void KeyboardLayout::setModifiers(std::uint32_t pressed, std::uint32_t latched, std::uint32_t locked,
                                  std::uint32_t group)
{
    if (state_ != nullptr)
        xkb_state_update_mask(state_, pressed, latched, locked, 0, 0, group);
}

Qt::Key KeyboardLayout::key(std::uint32_t code) const
{
    if (state_ == nullptr)
        return Qt::Key_unknown;
    const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state_, code + offsetOfXkb);
    const auto *named =
        std::find_if(keys.begin(), keys.end(), [symbol](const auto &entry) { return entry.first == symbol; });
    if (named != keys.end())
        return named->second;
    // The numbers of the other keys that Qt names are those of their upper-case letters.
    const std::uint32_t letter = xkb_keysym_to_utf32(xkb_keysym_to_upper(symbol));
    return letter >= ' ' && letter <= 0xff ? Qt::Key(letter) : Qt::Key_unknown;
}

QString KeyboardLayout::text(std::uint32_t code) const
{
    if (state_ == nullptr)
        return {};
    const char32_t letter = xkb_state_key_get_utf32(state_, code + offsetOfXkb);
    return letter == 0 ? QString() : QString::fromUcs4(&letter, 1);
}

bool KeyboardLayout::repeats(std::uint32_t code) const
{
    return keymap_ != nullptr && xkb_keymap_key_repeats(keymap_, code + offsetOfXkb) != 0;
}

Qt::KeyboardModifiers KeyboardLayout::modifiers() const
{
    Qt::KeyboardModifiers modifiers;
    for (const auto &[name, modifier] : modifierNames) {
        if (state_ != nullptr && xkb_state_mod_name_is_active(state_, name, XKB_STATE_MODS_EFFECTIVE) > 0)
            modifiers |= modifier;
    }
    return modifiers;
}
