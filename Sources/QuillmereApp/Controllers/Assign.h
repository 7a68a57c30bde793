#pragma once

#include <type_traits>
#include <utility>

namespace quillmere {

// Gives a field of object a value, and emits changed if it is another one than before.
template <typename Object, typename T>
void assign(Object& object, T& field, std::type_identity_t<T> value, void (Object::*changed)()) {
    if (field == value) return;
    field = std::move(value);
    (object.*changed)();
}

}  // namespace quillmere
