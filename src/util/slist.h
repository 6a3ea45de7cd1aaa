// A sorted list whose nodes come from an arena.
#pragma once

#include "util/arena.h"

namespace zeb
{

// Keeps elements in order of operator<, and cuts itself short behind an opaque element: T has
// `bool opaque() const`. Nodes live as long as the arena that add() is given.
template <class T>
class SList
{
public:
    struct Node {
        T value;
        Node* next;
    };

    // Whether the element was kept. One that lies behind an opaque element is not, and an opaque
    // one drops all behind it.
    //
    // Ties go behind the head but before later nodes of equal order, and the head's own opacity is
    // not looked at: the order in which coincident surfaces were filed decides which one shows,
    // and hosts rely on it.
    bool add(const T& value, Arena& arena)
    {
        Node** place = &fHead;
        if (fHead && !(value < fHead->value)) {
            Node* node = fHead;
            while (node->next && node->next->value < value) {
                node = node->next;
                if (node->value.opaque()) return false;
            }
            place = &node->next;
        }
        *place = arena.make<Node>(value, value.opaque() ? nullptr : *place);
        return true;
    }

    const Node* head() const { return fHead; }
    void clear() { fHead = nullptr; }

private:
    Node* fHead = nullptr;
};

}  // namespace zeb
