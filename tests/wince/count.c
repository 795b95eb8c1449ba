/* wince/count.c: a plugin of the emulator that counts the instructions of a loaded file. The file lies where
 * LUMO_LOAD_AT has it loaded. Between two marks, which the program makes by a system call that nobody has, it
 * counts the instructions of the file and those of the rest of the program's first thread. All the time it
 * watches where the file reads and writes: the emulator lets an access pass that does not lie on its own
 * size, and a terminal may not. At the end a line says what it saw:
 *
 *   INSTRUCTIONS in the file, INSTRUCTIONS elsewhere, ACCESSES of the file, ACCESSES astray
 *
 * qemu-arm -plugin file=libcount.so,base=60000000,size=20000 PROGRAM */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The emulator's interface, version 1. No package has its header. */
typedef uint64_t PluginId;
typedef struct qemu_plugin_tb Block;
typedef struct qemu_plugin_insn Instruction;
typedef void OnExecution(unsigned thread, void *what);
typedef void OnAccess(unsigned thread, uint32_t access, uint64_t address, void *what);
typedef void OnSystemCall(PluginId id, unsigned thread, int64_t number, uint64_t, uint64_t, uint64_t,
                          uint64_t, uint64_t, uint64_t, uint64_t, uint64_t);
enum { kRegistersAreLeftAlone = 0, kReadsAndWrites = 3 };
extern void qemu_plugin_register_vcpu_tb_trans_cb(PluginId, void (*)(PluginId, Block *));
extern void qemu_plugin_register_vcpu_tb_exec_cb(Block *, OnExecution *, int, void *);
extern void qemu_plugin_register_vcpu_insn_exec_cb(Instruction *, OnExecution *, int, void *);
extern void qemu_plugin_register_vcpu_mem_cb(Instruction *, OnAccess *, int, int, void *);
extern void qemu_plugin_register_vcpu_syscall_cb(PluginId, OnSystemCall *);
extern void qemu_plugin_register_atexit_cb(PluginId, void (*)(PluginId, void *), void *);
extern size_t qemu_plugin_tb_n_insns(const Block *);
extern Instruction *qemu_plugin_tb_get_insn(const Block *, size_t);
extern uint64_t qemu_plugin_insn_vaddr(const Instruction *);
extern unsigned qemu_plugin_mem_size_shift(uint32_t access);
int qemu_plugin_install(PluginId id, const void *info, int count, char **words);
int qemu_plugin_version = 1;

enum { kMark = 600, kShown = 20 };

static uint64_t base, size;
static int counting;
static uint64_t in_file, elsewhere, accesses, astray;

static void CountOne(unsigned thread, void *what) {
  (void)thread;
  (void)what;
  in_file += counting != 0;
}

static void CountBlock(unsigned thread, void *instructions) {
  if (counting && thread == 0) elsewhere += (uintptr_t)instructions;
}

static void Watch(unsigned thread, uint32_t access, uint64_t address, void *what) {
  const unsigned bytes = 1U << qemu_plugin_mem_size_shift(access);
  (void)thread;
  ++accesses;
  if (address % bytes == 0) return;
  if (astray++ < kShown) {
    fprintf(stderr, "the instruction at %" PRIx64 " takes %u bytes at %" PRIx64 "\n",
            (uint64_t)(uintptr_t)what - base, bytes, address);
  }
}

static void Translate(PluginId id, Block *block) {
  size_t others = 0;
  (void)id;
  for (size_t i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
    Instruction *const instruction = qemu_plugin_tb_get_insn(block, i);
    const uint64_t address = qemu_plugin_insn_vaddr(instruction);
    if (address - base >= size) {
      ++others;
      continue;
    }
    qemu_plugin_register_vcpu_insn_exec_cb(instruction, CountOne, kRegistersAreLeftAlone, NULL);
    qemu_plugin_register_vcpu_mem_cb(instruction, Watch, kRegistersAreLeftAlone, kReadsAndWrites,
                                     (void *)(uintptr_t)address);
  }
  if (others != 0) {
    qemu_plugin_register_vcpu_tb_exec_cb(block, CountBlock, kRegistersAreLeftAlone, (void *)others);
  }
}

static void Mark(PluginId id, unsigned thread, int64_t number, uint64_t begins, uint64_t b, uint64_t c,
                 uint64_t d, uint64_t e, uint64_t f, uint64_t g, uint64_t h) {
  (void)id, (void)thread, (void)b, (void)c, (void)d, (void)e, (void)f, (void)g, (void)h;
  if (number == kMark) counting = begins == 1;
}

static void End(PluginId id, void *what) {
  (void)id;
  (void)what;
  fprintf(stderr,
          "%" PRIu64 " in the file, %" PRIu64 " elsewhere, %" PRIu64 " accesses of the file, %" PRIu64
          " astray\n",
          in_file, elsewhere, accesses, astray);
}

int qemu_plugin_install(PluginId id, const void *info, int count, char **words) {
  (void)info;
  for (int i = 0; i < count; ++i) {
    if (strncmp(words[i], "base=", 5) == 0) base = strtoull(words[i] + 5, NULL, 16);
    if (strncmp(words[i], "size=", 5) == 0) size = strtoull(words[i] + 5, NULL, 16);
  }
  qemu_plugin_register_vcpu_tb_trans_cb(id, Translate);
  qemu_plugin_register_vcpu_syscall_cb(id, Mark);
  qemu_plugin_register_atexit_cb(id, End, NULL);
  return 0;
}
