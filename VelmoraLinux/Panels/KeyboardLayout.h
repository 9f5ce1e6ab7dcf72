#pragma once

#include <VelmoraLinux/Process/FileDescriptor.h>

#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

// What the keys of the user's keyboard mean at present.
class KeyboardLayout {
public:
    KeyboardLayout();
    ~KeyboardLayout();
    Q_DISABLE_COPY_MOVE(KeyboardLayout)

    // A layout in the text form of libxkbcommon. One that cannot be read leaves keys without meaning.
    void load(const FileDescriptor &file, std::size_t size);
    void setModifiers(std::uint32_t pressed, std::uint32_t latched, std::uint32_t locked,
                      std::uint32_t group);

    // `code` as Wayland counts keys. A key that Qt has no name for is Qt::Key_unknown.
    [[nodiscard]] Qt::Key key(std::uint32_t code) const;
    [[nodiscard]] QString text(std::uint32_t code) const;
    // Whether it does when it is held down, as Shift does not.
    [[nodiscard]] bool repeats(std::uint32_t code) const;
    [[nodiscard]] Qt::KeyboardModifiers modifiers() const;

private:
    xkb_context *context_;
    xkb_keymap *keymap_ = nullptr;
    xkb_state *state_ = nullptr;
};
