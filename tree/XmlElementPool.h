// XmlElementPool.h - storage for the elements that a CXmlDocument (tree/XmlDocument.h) builds
// while a reader runs: slots carved from larger blocks, reused as elements are destroyed.
//
// Internal to the tree: CXmlElement (tree/XmlElement.h) routes its operator new and delete here.
#ifndef QZXML_TREE_XMLELEMENTPOOL_H
#define QZXML_TREE_XMLELEMENTPOOL_H

#include <cstddef>

namespace QzXmlLib16 {

// Every element's storage is preceded by a small header that tells where it came from: the
// heap (elements made by hand) or a block of a pool. A block lives until its pool lets go of
// it and the last element removed from the tree with storage in it is destroyed, so an
// element that RemoveLastChildElement hands to the caller may outlive the document.
//
// A pool and the elements of its tree belong to the document's thread. A removed element
// ("orphan") may be destroyed on any thread: it only counts its block down atomically.
class CXmlElementPool {
public:
    CXmlElementPool();
    // Releases the blocks (see Release).
    ~CXmlElementPool();

    CXmlElementPool(const CXmlElementPool&) = delete;
    CXmlElementPool& operator=(const CXmlElementPool&) = delete;

    // Storage for one element of `size` bytes: a reused slot, the next slot of the current
    // block, or the heap for a size that is not the slot size. Throws std::bad_alloc.
    void* Allocate(size_t size);

    // Lets go of every block: blocks without live orphans are freed, the others when their last
    // orphan goes. Every element of the tree must have been destroyed before. The pool can then
    // be used again.
    void Release();

    // Storage from the heap, with the header that marks it so.
    static void* AllocateUnpooled(size_t size);
    // Releases the storage of an element of any origin. Null is ignored.
    static void Free(void* object);
    // Marks a pooled element as removed from its tree: its slot is no longer reused, and its
    // block stays alive until the element is freed. Heap elements are left as they are.
    static void Orphan(void* object);

private:
    struct Block;
    struct Slot;

    static Slot* SlotOf(void* object);
    static void* ObjectOf(Slot* slot);
    static Slot* SlotAt(Block* block, size_t index);
    // Drops one reference of the block and frees it with the last.
    static void Unreference(Block* block);
    void Recycle(Slot* slot);

    Block* m_pBlocks;     // all blocks this pool holds, newest first
    Slot* m_pFreeSlots;   // slots of destroyed elements, ready for reuse
    size_t m_nextInBlock; // index of the next unused slot of m_pBlocks
};

} // namespace QzXmlLib16

#endif
