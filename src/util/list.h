// The singly linked list that the library keeps its records in.
#pragma once

#include <utility>

#include "util/pool.h"

namespace zeb
{

// Elements are added at the head, so a list runs from the latest to the earliest. It owns its
// nodes, never what a pointer element points to.
template <class T>
class List
{
public:
    struct Node {
        T value;
        Node* next;

        static void* operator new(std::size_t bytes) { return Pool::take(bytes); }
        static void operator delete(void* node) { Pool::give(node, sizeof(Node)); }
    };

    List() = default;
    // Adds the other's elements from its head on, so the copy runs the other way round: users of
    // the list rely on that order.
    List(const List& other)
    {
        for (const Node* node = other.fHead; node; node = node->next) add(node->value);
    }
    List(List&& other) noexcept : fHead(std::exchange(other.fHead, nullptr)) {}
    List& operator=(List other) noexcept
    {
        std::swap(fHead, other.fHead);
        return *this;
    }
    ~List() { flush(); }

    short add(T value)
    {
        fHead = new Node{std::move(value), fHead};
        return 1;
    }

    bool empty() const { return !fHead; }
    T* head() { return fHead ? &fHead->value : nullptr; }
    const T* head() const { return fHead ? &fHead->value : nullptr; }

    // The node before the one that holds x; the last node if none does or only the head does.
    Node* findPred(const T& x) const
    {
        Node* node = fHead;
        while (node && node->next && !(node->next->value == x)) node = node->next;
        return node;
    }

    T* find(const T& x) const
    {
        if (!fHead) return nullptr;
        if (fHead->value == x) return &fHead->value;
        Node* before = findPred(x);
        return before->next ? &before->next->value : nullptr;
    }

    short detachHead()
    {
        if (!fHead) return 0;
        delete std::exchange(fHead, fHead->next);
        return 1;
    }

    short detach(const T& x)
    {
        if (!fHead) return 0;
        if (fHead->value == x) return detachHead();
        Node* before = findPred(x);
        if (!before->next) return 0;
        delete std::exchange(before->next, before->next->next);
        return 1;
    }

    // Unlinks the head node and returns what it held. The list must not be empty.
    T takeHead()
    {
        T value = std::move(fHead->value);
        detachHead();
        return value;
    }

    void flush()
    {
        while (detachHead()) {
        }
    }

    template <class Value, class NodePtr>
    struct Cursor {
        NodePtr node;
        Value& operator*() const { return node->value; }
        Cursor& operator++()
        {
            node = node->next;
            return *this;
        }
        bool operator!=(const Cursor& other) const { return node != other.node; }
    };
    auto begin() { return Cursor<T, Node*>{fHead}; }
    auto end() { return Cursor<T, Node*>{nullptr}; }
    auto begin() const { return Cursor<const T, const Node*>{fHead}; }
    auto end() const { return Cursor<const T, const Node*>{nullptr}; }

private:
    template <class>
    friend class ListIterator;
    Node* fHead = nullptr;
};

// Walks a list that may not change meanwhile.
template <class T>
class ListIterator
{
public:
    explicit ListIterator(List<T>& list) : fList(list), fNode(list.fHead) {}

    void restart() { fNode = fList.fHead; }
    // The current element, advancing past it; null at the end.
    T* operator++(int)
    {
        T* value = current();
        if (fNode) fNode = fNode->next;
        return value;
    }
    // Advances, then answers the new current element; null at the end.
    T* operator++()
    {
        if (fNode) fNode = fNode->next;
        return current();
    }

private:
    T* current() const { return fNode ? &fNode->value : nullptr; }
    List<T>& fList;
    typename List<T>::Node* fNode;
};

}  // namespace zeb
