// XmlElementPool.cpp - element storage in blocks of slots, with a header before each element
// that tells the heap from a pool block and a tree element from a removed one.
#include "tree/XmlElementPool.h"

#include <atomic>
#include <new>

#include "tree/XmlElement.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define QZXML_POISON(address, size) ASAN_POISON_MEMORY_REGION(address, size)
#define QZXML_UNPOISON(address, size) ASAN_UNPOISON_MEMORY_REGION(address, size)
#else
#define QZXML_POISON(address, size) ((void)(address), (void)(size))
#define QZXML_UNPOISON(address, size) ((void)(address), (void)(size))
#endif

namespace QzXmlLib16 {

// --- Layout

// A block: this header, then kSlotsPerBlock slots. It counts one reference for the pool that
// holds it and one for each orphan with storage in it.
struct CXmlElementPool::Block {
    std::atomic<size_t> references;
    CXmlElementPool* pool; // null once the pool has let go
    Block* next;           // the pool's next block
};

// A slot: this header, then the element. A heap element has the same header, with a null
// block.
struct CXmlElementPool::Slot {
    Block* block;
    union {
        size_t orphan;  // while an element lives: 1 once it is removed from its tree
        Slot* nextFree; // while the slot waits for reuse
    };
};

namespace {

// Sizes
const size_t kAlignment = 16;
const size_t kSlotsPerBlock = 256;

constexpr size_t RoundUp(size_t size) {
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

const size_t kHeaderSize = RoundUp(2 * sizeof(void*));
const size_t kBlockHeaderSize = RoundUp(3 * sizeof(void*));
const size_t kObjectSize = sizeof(CXmlElement);
const size_t kSlotSize = RoundUp(kHeaderSize + kObjectSize);

} // namespace

// --- Raw storage

CXmlElementPool::Slot* CXmlElementPool::SlotOf(void* object) {
    static_assert(sizeof(Slot) <= kHeaderSize && sizeof(Block) <= kBlockHeaderSize, "headers fit");
    return reinterpret_cast<Slot*>(static_cast<char*>(object) - kHeaderSize);
}

void* CXmlElementPool::ObjectOf(Slot* slot) {
    return reinterpret_cast<char*>(slot) + kHeaderSize;
}

CXmlElementPool::Slot* CXmlElementPool::SlotAt(Block* block, size_t index) {
    return reinterpret_cast<Slot*>(reinterpret_cast<char*>(block) + kBlockHeaderSize + index * kSlotSize);
}

void CXmlElementPool::Unreference(Block* block) {
    if (block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        block->~Block();
        ::operator delete(block);
    }
}

// --- The pool

CXmlElementPool::CXmlElementPool()
    : m_pBlocks(nullptr), m_pFreeSlots(nullptr), m_nextInBlock(kSlotsPerBlock) {}

CXmlElementPool::~CXmlElementPool() {
    Release();
}

void CXmlElementPool::Release() {
    Block* block = m_pBlocks;
    m_pBlocks = nullptr;
    m_pFreeSlots = nullptr;
    m_nextInBlock = kSlotsPerBlock;
    while (block) {
        Block* next = block->next;
        block->pool = nullptr;
        Unreference(block);
        block = next;
    }
}

void* CXmlElementPool::Allocate(size_t size) {
    if (size != kObjectSize)
        return AllocateUnpooled(size);
    Slot* slot = m_pFreeSlots;
    if (slot) {
        QZXML_UNPOISON(ObjectOf(slot), kSlotSize - kHeaderSize);
        m_pFreeSlots = slot->nextFree;
    } else {
        if (m_nextInBlock == kSlotsPerBlock) {
            Block* block = new (::operator new(kBlockHeaderSize + kSlotsPerBlock * kSlotSize)) Block;
            block->references.store(1, std::memory_order_relaxed);
            block->pool = this;
            block->next = m_pBlocks;
            m_pBlocks = block;
            m_nextInBlock = 0;
        }
        slot = SlotAt(m_pBlocks, m_nextInBlock++);
        slot->block = m_pBlocks;
    }
    slot->orphan = 0;
    return ObjectOf(slot);
}

void* CXmlElementPool::AllocateUnpooled(size_t size) {
    Slot* slot = static_cast<Slot*>(::operator new(kHeaderSize + size));
    slot->block = nullptr;
    slot->orphan = 0;
    return ObjectOf(slot);
}

// A tree element's block is still held by its pool, because the document destroys its tree
// before it lets the pool go; its slot goes back to that pool's free list.
void CXmlElementPool::Free(void* object) {
    if (!object)
        return;
    Slot* slot = SlotOf(object);
    Block* block = slot->block;
    if (!block)
        ::operator delete(slot);
    else if (slot->orphan)
        Unreference(block);
    else
        block->pool->Recycle(slot);
}

void CXmlElementPool::Recycle(Slot* slot) {
    slot->nextFree = m_pFreeSlots;
    m_pFreeSlots = slot;
    QZXML_POISON(ObjectOf(slot), kSlotSize - kHeaderSize);
}

void CXmlElementPool::Orphan(void* object) {
    Slot* slot = SlotOf(object);
    if (slot->block && !slot->orphan) {
        slot->orphan = 1;
        slot->block->references.fetch_add(1, std::memory_order_relaxed);
    }
}

} // namespace QzXmlLib16
