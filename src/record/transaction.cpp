#include "record/transaction.h"

#include <cstring>

#include "config/lumoconfig.h"
#include "foundation/memory.h"
#include "foundation/trace.h"
#include "record/receipt.h"

namespace lumo {

// One block of the record's memory. Pieces are handed out front to back and never taken back one by one.
struct TransactionMemory {
  TransactionMemory *next;
  size_t used;      // bytes, a multiple of kAlignment
  size_t capacity;  // bytes behind this head
};

namespace {

constexpr size_t kAlignment = alignof(std::max_align_t);
constexpr size_t kHeadBytes = (sizeof(TransactionMemory) + kAlignment - 1) / kAlignment * kAlignment;
constexpr size_t kChunkBytes = 2048 - kHeadBytes;  // holds all the texts of a transaction without goods

// A piece above this size gets a chunk of its own. So at most a quarter of a shared chunk is wasted.
constexpr size_t kLargestSharedPiece = kChunkBytes / 4;

TransactionMemory *CreateChunk(size_t capacity) {
  auto *chunk = static_cast<TransactionMemory *>(MemCalloc(1, kHeadBytes + capacity, LUMO_HERE));
  chunk->capacity = capacity;
  return chunk;
}

void *TakePiece(TransactionMemory *chunk, size_t size) {
  char *piece = reinterpret_cast<char *>(chunk) + kHeadBytes + chunk->used;
  chunk->used += size;
  return piece;
}

void FreeChunks(TransactionMemory *chunk) {
  while (chunk != nullptr) {
    TransactionMemory *next = chunk->next;
    MemFree(chunk, LUMO_HERE);
    chunk = next;
  }
}

}  // namespace

Transaction *TransactionCreate() {
  auto *transaction = static_cast<Transaction *>(MemCalloc(1, sizeof(Transaction), LUMO_HERE));
  const SettingsRecord &settings = Settings();
  TransactionCopyText(transaction, &transaction->serverAddr, settings.serverAddr);
  TransactionCopyText(transaction, &transaction->serverAltAddr, settings.serverAltAddr);
  transaction->timeout = settings.timeout;
  transaction->sslMode = settings.sslMode;
  transaction->body = ReceiptCreate();
  transaction->header = ReceiptCreate();
  transaction->footer = ReceiptCreate();
  return transaction;
}

int TransactionFree(Transaction *transaction) {
  if (transaction == nullptr) return 0;
  ReceiptFree(transaction->footer);
  ReceiptFree(transaction->header);
  ReceiptFree(transaction->body);
  FreeChunks(transaction->memory);
  MemFree(transaction, LUMO_HERE);
  return 0;
}

void *TransactionAllocate(Transaction *transaction, size_t size) {
  // The largest sizes would wrap when rounded up; as they are, they fail in the allocation.
  if (size > SIZE_MAX - kAlignment - kHeadBytes) return MemCalloc(1, size, LUMO_HERE);
  const size_t rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
  TransactionMemory *current = transaction->memory;
  if (current != nullptr && rounded <= current->capacity - current->used) return TakePiece(current, rounded);
  if (rounded > kLargestSharedPiece && current != nullptr) {
    // Behind the current chunk, which goes on serving small pieces.
    TransactionMemory *own = CreateChunk(rounded);
    own->next = current->next;
    current->next = own;
    return TakePiece(own, rounded);
  }
  TransactionMemory *chunk = CreateChunk(rounded > kChunkBytes ? rounded : kChunkBytes);
  chunk->next = current;
  transaction->memory = chunk;
  return TakePiece(chunk, rounded);
}

const char *TransactionCopyText(Transaction *transaction, const char **field, const char *source) {
  if (source == nullptr) {
    *field = nullptr;
    TraceError("trans_strcpy src == NULL\n");
    return nullptr;
  }
  const size_t bytes = std::strlen(source) + 1;
  auto *copy = static_cast<char *>(TransactionAllocate(transaction, bytes));
  std::memcpy(copy, source, bytes);
  *field = copy;
  return copy;
}

bool IsOffline(const Transaction *transaction) {
  return transaction->request.isOffline;
}

bool TraceIfNull(const Transaction *transaction) {
  if (transaction != nullptr) return false;
  TraceError("Pointer \"%s\" is null\n", "trans");
  return true;
}

}  // namespace lumo
