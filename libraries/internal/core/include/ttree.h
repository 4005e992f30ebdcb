#pragma once

#include "tassert.h"

// Ordered tree of browser nodes. A tree is a node; children hang on a singly
// linked list, newest first. A node owns its children and, when ownsData()
// is set, its payload (deleted through its virtual destructor).
template <typename T>
class TTree
{
public:
    TTree() = default;

    // Links the new node as the parent's first child; ownsData is inherited.
    TTree(TTree* parent, int tag)
        : m_tag(tag)
    {
        if (parent)
            linkUnder(parent);
    }

    TTree(const TTree&) = delete;
    TTree& operator=(const TTree&) = delete;

    ~TTree()
    {
        if (m_ownsData && m_data)
            delete m_data;
        TTree* child = m_firstChild;
        while (child) {
            TTree* next = child->m_nextSibling;
            child->m_parent = nullptr; // already leaving: no unlink walk per child
            delete child;
            child = next;
        }
        m_firstChild = nullptr;
        m_childCount = 0;
        unlink();
    }

    T data() const { return m_data; }
    void setData(T data) { m_data = data; }
    TTree* parent() const { return m_parent; }
    TTree* firstChild() const { return m_firstChild; }
    TTree* nextSibling() const { return m_nextSibling; }
    int childCount() const { return m_childCount; }
    int tag() const { return m_tag; }
    bool isEnabled() const { return m_enabled; }
    void setEnabled(bool enabled) { m_enabled = enabled; }
    bool ownsData() const { return m_ownsData; }
    void setOwnsData(bool owns) { m_ownsData = owns; }
    bool isExpanded() const { return m_expanded; }
    void setExpanded(bool expanded) { m_expanded = expanded; }
    bool isVisible() const { return m_visible; }
    void setVisible(bool visible) { m_visible = visible; }

    // Null when i is out of range; walks the sibling chain, so callers that
    // visit every child walk nextSibling() instead.
    TTree* child(int i) const
    {
        if (i < 0 || m_childCount < i + 1)
            return nullptr;
        TTree* node = m_firstChild;
        for (int k = 0; k < i && node; ++k)
            node = node->m_nextSibling;
        return node;
    }

    // True when ancestor is this node or one of its ancestors.
    bool isWithin(const TTree* ancestor) const
    {
        for (const TTree* n = this; n; n = n->m_parent) {
            if (n == ancestor)
                return true;
        }
        return false;
    }

    // Unlinks the node from its parent and keeps its subtree.
    void detach() { unlink(); }

    // Moves the node (with its subtree) to be the parent's new first child;
    // like a new child, the node takes ownsData from its new parent. A node
    // cannot move under itself or one of its descendants: that would close
    // a cycle that no destructor or walk ever leaves.
    void attachTo(TTree* parent)
    {
        if (parent && parent->isWithin(this)) {
            t_assert("parent outside the moved subtree", "libraries\\internal\\core\\include\\ttree", __LINE__, false);
            return;
        }
        unlink();
        if (parent)
            linkUnder(parent);
    }

    // Deep copy of structure and flags holding the same payload pointers; a
    // copy never owns its payloads.
    TTree* copy() const
    {
        TTree* root = new TTree;
        copyFlagsTo(root);
        copyChildrenTo(root);
        return root;
    }

private:
    void linkUnder(TTree* parent)
    {
        m_parent = parent;
        m_nextSibling = parent->m_firstChild;
        parent->m_firstChild = this;
        ++parent->m_childCount;
        m_ownsData = parent->m_ownsData;
    }

    void unlink()
    {
        if (!m_parent)
            return;
        if (m_parent->m_firstChild == this) {
            m_parent->m_firstChild = m_nextSibling;
        } else {
            for (TTree* s = m_parent->m_firstChild; s; s = s->m_nextSibling) {
                if (s->m_nextSibling == this) {
                    s->m_nextSibling = m_nextSibling;
                    break;
                }
            }
        }
        --m_parent->m_childCount;
        m_parent = nullptr;
        m_nextSibling = nullptr;
    }

    void copyFlagsTo(TTree* target) const
    {
        target->m_data = m_data;
        target->m_tag = m_tag;
        target->m_enabled = m_enabled;
        target->m_ownsData = false;
        target->m_expanded = m_expanded;
        target->m_visible = m_visible;
    }

    // Appends copies in the same order: built on a tail pointer, not by head
    // insertion, so the copy's child order matches the source.
    void copyChildrenTo(TTree* target) const
    {
        TTree* tail = nullptr;
        for (const TTree* c = m_firstChild; c; c = c->m_nextSibling) {
            TTree* dup = new TTree;
            c->copyFlagsTo(dup);
            dup->m_parent = target;
            if (tail)
                tail->m_nextSibling = dup;
            else
                target->m_firstChild = dup;
            tail = dup;
            ++target->m_childCount;
            c->copyChildrenTo(dup);
        }
    }

    T m_data = T();
    TTree* m_parent = nullptr;     // not owned
    TTree* m_firstChild = nullptr; // owned, with its siblings
    TTree* m_nextSibling = nullptr; // owned by the parent
    int m_childCount = 0;
    int m_tag = -1;
    bool m_enabled = true;
    bool m_ownsData = false;
    bool m_expanded = false;
    bool m_visible = true;
};
