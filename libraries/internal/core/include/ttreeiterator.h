#pragma once

#include "tassert.h"
#include "ttree.h"

template <typename T> class TTreeConstIterator;

// A visit order over a subtree. The pending list is a dataless root whose
// children are entries pointing at nodes of the walked tree; it works as a
// stack (push = new first child, pop = take and destroy the first child).
template <typename T>
class TTreeIteratorStrategy
{
public:
    explicit TTreeIteratorStrategy(TTreeConstIterator<T>* iterator)
        : m_iterator(iterator) {}
    virtual ~TTreeIteratorStrategy() = default;
    virtual void next() = 0;

protected:
    using Node = TTree<T>;
    using Pending = TTree<Node*>;

    void push(Node* node)
    {
        Pending* entry = new Pending(&m_pending, -1);
        entry->setData(node);
    }

    Node* pop()
    {
        Pending* entry = m_pending.firstChild();
        if (!entry)
            return nullptr;
        Node* node = entry->data();
        delete entry;
        return node;
    }

    TTreeConstIterator<T>* m_iterator; // not owned: the iterator owns us
    Pending m_pending;
};

template <typename T>
class TTreeIteratorStrategyBFS : public TTreeIteratorStrategy<T>
{
public:
    using TTreeIteratorStrategy<T>::TTreeIteratorStrategy;
    ~TTreeIteratorStrategyBFS() override = default;
    void next() override;
};

template <typename T>
class TTreeIteratorStrategyDFS : public TTreeIteratorStrategy<T>
{
public:
    using TTreeIteratorStrategy<T>::TTreeIteratorStrategy;
    ~TTreeIteratorStrategyDFS() override = default;
    void next() override;
};

template <typename T>
class TTreeConstIterator
{
public:
    enum StrategyKind { BFS = 0, DFS = 1 };

    TTreeConstIterator(const TTree<T>* root, int strategyKind)
        : m_root(const_cast<TTree<T>*>(root))
        , m_current(m_root)
    {
        if (strategyKind == BFS)
            m_strategy = new TTreeIteratorStrategyBFS<T>(this);
        else if (strategyKind == DFS)
            m_strategy = new TTreeIteratorStrategyDFS<T>(this);
        else
            t_assert("false", "libraries\\internal\\core\\include\\ttreeiterator", 36, false);
    }
    TTreeConstIterator(const TTreeConstIterator&) = delete;
    TTreeConstIterator& operator=(const TTreeConstIterator&) = delete;
    virtual ~TTreeConstIterator() { delete m_strategy; }

    const TTree<T>* current() const { return m_current; }
    const TTree<T>* operator*() const { return m_current; }
    TTreeConstIterator& operator++()
    {
        if (m_strategy && m_current)
            m_strategy->next();
        return *this;
    }

    TTree<T>* root() const { return m_root; }
    TTree<T>* node() const { return m_current; }
    void setNode(TTree<T>* node) { m_current = node; }

private:
    TTreeIteratorStrategy<T>* m_strategy = nullptr; // owned
    TTree<T>* m_root;                               // not owned
    TTree<T>* m_current;                            // not owned
};

template <typename T>
class TTreeIterator
{
public:
    TTreeIterator(TTree<T>* root, int strategyKind)
        : m_it(root, strategyKind) {}
    virtual ~TTreeIterator() = default;

    TTree<T>* current() const { return m_it.node(); }
    TTree<T>* operator*() const { return m_it.node(); }
    TTreeIterator& operator++()
    {
        ++m_it;
        return *this;
    }

private:
    TTreeConstIterator<T> m_it;
};

// Runs along each sibling chain before descending; the most recently pushed
// first child is descended into first.
template <typename T>
void TTreeIteratorStrategyBFS<T>::next()
{
    TTree<T>* current = this->m_iterator->node();
    if (current->firstChild())
        this->push(current->firstChild());
    if (current != this->m_iterator->root() && current->nextSibling()) {
        this->m_iterator->setNode(current->nextSibling());
        return;
    }
    this->m_iterator->setNode(this->pop());
}

// Pre-order: the next sibling waits on the stack while the first child is
// visited.
template <typename T>
void TTreeIteratorStrategyDFS<T>::next()
{
    TTree<T>* current = this->m_iterator->node();
    if (current != this->m_iterator->root() && current->nextSibling())
        this->push(current->nextSibling());
    if (current->firstChild()) {
        this->m_iterator->setNode(current->firstChild());
        return;
    }
    this->m_iterator->setNode(this->pop());
}
