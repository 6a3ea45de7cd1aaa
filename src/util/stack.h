// Lists used as stacks.
#pragma once

#include "util/list.h"

namespace zeb
{

template <class T>
class Stack
{
public:
    void push(T value) { fList.add(std::move(value)); }
    // Removes the top; 0 when empty.
    short pop() { return fList.detachHead(); }
    // The top element, null when empty. It keeps its place in memory until it is popped.
    T* top() { return fList.head(); }
    bool empty() const { return fList.empty(); }
    void flush() { fList.flush(); }
    const List<T>& elements() const { return fList; }

private:
    List<T> fList;
};

// A stack on which a push without argument copies the top.
template <class T>
class CopyStack : public Stack<T>
{
public:
    using Stack<T>::push;
    // A default element goes onto an empty stack.
    void push() { this->push(this->empty() ? T() : T(*this->top())); }
};

}  // namespace zeb
