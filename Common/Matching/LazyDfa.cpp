#include "Common/Matching/LazyDfa.h"

#include <algorithm>
#include <new>
#include <utility>

#include "Common/Matching/SuffixTruth.h"

namespace Matching {

// Header of one allocation: behind it stand the ways out, one a class, then the kernel's states.
struct LazyDfa::DfaState {
  using Way = std::atomic<const DfaState*>;

  static constexpr std::uint32_t kUnknown = kOpenAccept;  // no state is left so

  bool isSpecial = false;  // one of the next three
  bool isDead = false;     // nothing leads on from here
  bool matched = false;
  bool acceptsHere = false;  // goals Any and Every: a match ends here, whatever follows
  bool atEdge = false;
  bool afterWord = false;
  bool isFresh = false;
  std::uint32_t kernelSize = 0;
  std::uint32_t wayCount = 0;
  std::size_t hash = 0;
  DfaState* below = nullptr;  // next in the bucket
  // Apart from the others: a compiler reads several of them as one word, and this one is written.
  alignas(std::size_t) mutable std::atomic<std::uint32_t> acceptAtEdge{kUnknown};

  [[nodiscard]] Way* Ways() const {
    return reinterpret_cast<Way*>(const_cast<DfaState*>(this) + 1);
  }
  [[nodiscard]] StateId* Kernel() const { return reinterpret_cast<StateId*>(Ways() + wayCount); }

  static std::size_t SizeOf(std::size_t ways, std::size_t kernel) {
    return sizeof(DfaState) + ways * sizeof(Way) + kernel * sizeof(StateId);
  }
};

// What one run works in when it leaves the states that exist.
struct LazyDfa::Workspace {
  explicit Workspace(const Setup& setup) {
    if (setup.asksSuffixes) {
      stepper =
          std::make_unique<SuffixTruth>(setup.program, setup.tree, setup.goal, setup.lookAheads);
    } else {
      stepper =
          std::make_unique<Simulation>(setup.program, setup.tree, setup.goal, setup.isAnchored);
    }
  }

  std::unique_ptr<AStepper> stepper;
  Kernel from;
  Kernel to;
};

// The workspace of one run, taken when it is first needed and handed on at the end.
class LazyDfa::Lease {
public:
  explicit Lease(const LazyDfa& automaton) : fAutomaton(automaton) {}
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease() {
    if (fWorkspace) fAutomaton.fSpare.Give(std::move(fWorkspace));
  }

  Workspace& Get() {
    if (!fWorkspace) fWorkspace = fAutomaton.fSpare.Take();
    if (!fWorkspace) fWorkspace = std::make_unique<Workspace>(fAutomaton.fSetup);
    return *fWorkspace;
  }

private:
  const LazyDfa& fAutomaton;
  std::unique_ptr<Workspace> fWorkspace;
};

// Memory of one state, which goes back to the budget unless the state comes to stay.
class LazyDfa::Reservation {
public:
  Reservation(const LazyDfa& automaton, std::size_t bytes)
      : fAutomaton(automaton), fBytes(bytes), fIsHeld(automaton.TakeMemory(bytes)) {}
  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;
  ~Reservation() {
    if (fIsHeld) fAutomaton.GiveMemoryBack(fBytes);
  }

  [[nodiscard]] bool IsHeld() const { return fIsHeld; }
  void Keep() { fIsHeld = false; }

private:
  const LazyDfa& fAutomaton;
  const std::size_t fBytes;
  bool fIsHeld;
};

namespace {

std::size_t HashKernel(const Kernel& kernel) {
  std::uint64_t hash = static_cast<std::uint64_t>(kernel.atEdge) |
                       static_cast<std::uint64_t>(kernel.afterWord) << 1 |
                       static_cast<std::uint64_t>(kernel.isFresh) << 2 |
                       static_cast<std::uint64_t>(kernel.matched) << 3;
  for (const StateId id : kernel.states) {
    hash = (hash ^ id) * 0x9E3779B97F4A7C15U;
    hash ^= hash >> 32;
  }
  return static_cast<std::size_t>(hash);
}

}  // namespace

LazyDfa::LazyDfa(const Setup& setup) : fSetup(setup) {
  static_assert(alignof(DfaState) >= alignof(DfaState::Way));
  static_assert(sizeof(DfaState) % alignof(DfaState::Way) == 0);
}

LazyDfa::~LazyDfa() {
  for (auto& bucket : fBuckets) {
    DfaState* state = bucket.load(std::memory_order_relaxed);
    while (state != nullptr) {
      DfaState* const below = state->below;
      state->~DfaState();
      ::operator delete(state);
      state = below;
    }
  }
  GiveMemoryBack(MemoryUsed());
}

std::size_t LazyDfa::Run(const Subject& subject, std::size_t start, bool isFresh) const {
  std::size_t last = kNowhere;
  const bool isFirstEnough = fSetup.goal == Goal::Any;
  const auto onMatch = [&last, isFirstEnough](std::size_t pos) {
    last = pos;
    return isFirstEnough;
  };
  if (fSetup.direction == Direction::Forward) {
    RunForward(subject, start, isFresh, onMatch);
  } else {
    RunBackward(subject, start, onMatch);
  }
  return last;
}

std::uint32_t LazyDfa::FirstAccept(std::string_view text) const {
  Lease lease(*this);
  const DfaState* state = StartState(Subject{text}.BoundaryAt(0), false, lease);
  if (state == nullptr) return kOpenAccept;

  const auto& classOf = fSetup.classes.classOf;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const DfaState* next = state->Ways()[classOf[byte]].load(std::memory_order_acquire);
    if (next == nullptr) {
      if (fIsFull.load(std::memory_order_relaxed)) return kOpenAccept;
      next = Grow(*state, byte, lease.Get());
      if (next == nullptr) return kOpenAccept;
    }
    state = next;
    if (state->isDead) return kNoAccept;
  }
  return AcceptAtEdge(*state, lease);
}

void LazyDfa::MarkEvery(const Subject& subject, std::size_t start, LookAheadTable& table,
                        std::uint32_t number) const {
  RunBackward(subject, start, [&table, number](std::size_t pos) {
    table.Set(number, pos);
    return false;
  });
}

template <class OnMatch>
void LazyDfa::RunForward(const Subject& subject, std::size_t start, bool isFresh,
                         OnMatch onMatch) const {
  Lease lease(*this);
  const std::size_t size = subject.text.size();
  const DfaState* state = StartState(subject.BoundaryAt(start), isFresh, lease);
  if (state == nullptr) return Simulate(lease.Get(), subject, start, size, onMatch);
  if (state->acceptsHere && onMatch(start)) return;

  const auto& classOf = fSetup.classes.classOf;
  const char* const text = subject.text.data();
  for (std::size_t pos = start; pos < size; ++pos) {
    const auto byte = static_cast<unsigned char>(text[pos]);
    const DfaState* next = state->Ways()[classOf[byte]].load(std::memory_order_acquire);
    if (next == nullptr) {
      next = Grow(*state, byte, lease.Get());
      if (next == nullptr) {
        if (lease.Get().from.matched && onMatch(pos)) return;
        return Simulate(lease.Get(), subject, pos + 1, size, onMatch);
      }
    }
    state = next;
    if (!state->isSpecial) continue;
    if (state->matched && onMatch(pos)) return;
    if (state->acceptsHere && onMatch(pos + 1)) return;
    if (state->isDead) return;
  }
  if (AcceptAtEdge(*state, lease) != kNoAccept) onMatch(size);
}

template <class OnMatch>
void LazyDfa::RunBackward(const Subject& subject, std::size_t start, OnMatch onMatch) const {
  Lease lease(*this);
  const std::size_t stop = subject.from;
  const DfaState* state = StartState(subject.BoundaryAt(start), false, lease);
  if (state == nullptr) return Simulate(lease.Get(), subject, start, stop, onMatch);

  const auto& classOf = fSetup.classes.classOf;
  // A byte in front of the text is looked at and not consumed.
  const std::size_t peek = subject.hasPrevious && stop > 0 ? 1 : 0;
  for (std::size_t pos = start; pos > stop - peek; --pos) {
    const unsigned char byte = subject.At(pos - 1);
    const DfaState* next = state->Ways()[classOf[byte]].load(std::memory_order_acquire);
    if (next == nullptr) {
      next = Grow(*state, byte, lease.Get());
      if (next == nullptr) {
        if (lease.Get().from.matched && onMatch(pos)) return;
        if (pos == stop) return;
        return Simulate(lease.Get(), subject, pos - 1, stop, onMatch);
      }
    }
    state = next;
    if (!state->isSpecial) continue;
    if (state->matched && onMatch(pos)) return;
    if (state->isDead) return;
  }
  if (peek == 0 && AcceptAtEdge(*state, lease) != kNoAccept) onMatch(stop);
}

template <class OnMatch>
void LazyDfa::Simulate(Workspace& workspace, const Subject& subject, std::size_t pos,
                       std::size_t last, OnMatch onMatch) const {
  const bool isForward = fSetup.direction == Direction::Forward;
  while (pos != last && !workspace.from.states.empty()) {
    const unsigned char byte = subject.At(isForward ? pos : pos - 1);
    workspace.stepper->Step(workspace.from, subject.BoundaryAt(pos), byte, workspace.to);
    workspace.to.afterWord = fSetup.program.hasWordBoundaries && IsWordByte(byte);
    std::swap(workspace.from, workspace.to);
    if (workspace.from.matched && onMatch(pos)) return;
    pos = isForward ? pos + 1 : pos - 1;
  }
  const Boundary at = subject.BoundaryAt(pos);
  if (workspace.stepper->FirstAccept(workspace.from, at) != kNoAccept) onMatch(pos);
}

const LazyDfa::DfaState* LazyDfa::StartState(const Boundary& at, bool isFresh, Lease& lease) const {
  const bool isForward = fSetup.direction == Direction::Forward;
  const bool atEdge = isForward ? at.isBegin : at.isEnd;
  const bool afterWord = isForward ? at.isWordLeft : at.isWordRight;
  auto& known = fStarts[(atEdge ? 1U : 0U) | (afterWord ? 2U : 0U) | (isFresh ? 4U : 0U)];
  if (const DfaState* const state = known.load(std::memory_order_acquire)) return state;

  Kernel& kernel = lease.Get().from;
  kernel.atEdge = (fSetup.program.hasAssertions || fSetup.asksSuffixes) && atEdge;
  kernel.afterWord = fSetup.program.hasWordBoundaries && afterWord;
  kernel.isFresh = isFresh;
  kernel.matched = false;
  lease.Get().stepper->Begin(kernel);
  const DfaState* const state = Intern(kernel);
  if (state != nullptr) known.store(state, std::memory_order_release);
  return state;
}

const LazyDfa::DfaState* LazyDfa::Grow(const DfaState& from, unsigned char byte,
                                       Workspace& workspace) const {
  Kernel& kernel = workspace.to;
  kernel.states.assign(from.Kernel(), from.Kernel() + from.kernelSize);
  kernel.atEdge = from.atEdge;
  kernel.afterWord = from.afterWord;
  kernel.isFresh = from.isFresh;
  StepKernel(kernel, byte, workspace.from, workspace);
  const DfaState* const next = Intern(workspace.from);
  if (next == nullptr) return nullptr;
  from.Ways()[fSetup.classes.classOf[byte]].store(next, std::memory_order_release);
  return next;
}

void LazyDfa::StepKernel(const Kernel& from, unsigned char byte, Kernel& to,
                         Workspace& workspace) const {
  workspace.stepper->Step(from, Around(from, IsWordByte(byte)), byte, to);
  to.afterWord = fSetup.program.hasWordBoundaries && !to.states.empty() && IsWordByte(byte);
}

// What stands around the place of a kernel, some byte lying ahead.
Boundary LazyDfa::Around(const Kernel& kernel, bool isWordAhead) const {
  if (fSetup.direction == Direction::Forward) {
    return {.isBegin = kernel.atEdge,
            .isEnd = false,
            .isWordLeft = kernel.afterWord,
            .isWordRight = isWordAhead};
  }
  return {.isBegin = false,
          .isEnd = kernel.atEdge,
          .isWordLeft = isWordAhead,
          .isWordRight = kernel.afterWord};
}

// Which match ends here, nothing lying ahead. Kept in the state: all threads find the same.
std::uint32_t LazyDfa::AcceptAtEdge(const DfaState& state, Lease& lease) const {
  const auto known = state.acceptAtEdge.load(std::memory_order_relaxed);
  if (known != DfaState::kUnknown) return known;

  Workspace& workspace = lease.Get();
  Kernel& kernel = workspace.to;
  kernel.states.assign(state.Kernel(), state.Kernel() + state.kernelSize);
  kernel.isFresh = state.isFresh;
  kernel.atEdge = state.atEdge;
  kernel.afterWord = state.afterWord;
  Boundary at = Around(kernel, false);
  (fSetup.direction == Direction::Forward ? at.isEnd : at.isBegin) = true;
  const std::uint32_t accept = workspace.stepper->FirstAccept(kernel, at);
  state.acceptAtEdge.store(accept, std::memory_order_relaxed);  // stands alone, orders nothing
  return accept;
}

const LazyDfa::DfaState* LazyDfa::FindIn(const DfaState* from, const DfaState* end,
                                         const Kernel& kernel, std::size_t hash) const {
  for (; from != end; from = from->below) {
    if (from->hash == hash && from->atEdge == kernel.atEdge &&
        from->afterWord == kernel.afterWord && from->isFresh == kernel.isFresh &&
        from->matched == kernel.matched && from->kernelSize == kernel.states.size() &&
        std::equal(kernel.states.begin(), kernel.states.end(), from->Kernel())) {
      return from;
    }
  }
  return nullptr;
}

bool LazyDfa::TakeMemory(std::size_t bytes) const {
  if (fUsed.fetch_add(bytes, std::memory_order_relaxed) + bytes <= fSetup.budget &&
      (fSetup.allowance == nullptr || fSetup.allowance->Take(bytes))) {
    return true;
  }
  fUsed.fetch_sub(bytes, std::memory_order_relaxed);
  return false;
}

void LazyDfa::GiveMemoryBack(std::size_t bytes) const {
  fUsed.fetch_sub(bytes, std::memory_order_relaxed);
  if (fSetup.allowance != nullptr) fSetup.allowance->GiveBack(bytes);
}

// The one state with this kernel, which is put in order; null when it does not exist and the budget
// is spent.
const LazyDfa::DfaState* LazyDfa::Intern(Kernel& kernel) const {
  if (fSetup.goal != Goal::First) std::ranges::sort(kernel.states);
  const std::size_t hash = HashKernel(kernel);
  auto& bucket = fBuckets[hash % kBucketCount];
  DfaState* head = bucket.load(std::memory_order_acquire);
  if (const DfaState* const found = FindIn(head, nullptr, kernel, hash)) return found;

  const std::uint32_t ways = fSetup.classes.count;
  const std::size_t size = DfaState::SizeOf(ways, kernel.states.size());
  Reservation memory(*this, size);
  if (!memory.IsHeld()) {
    fIsFull.store(true, std::memory_order_relaxed);  // a hint, orders nothing
    return nullptr;
  }
  auto* const state = new (::operator new(size)) DfaState;
  state->wayCount = ways;
  for (std::uint32_t i = 0; i < ways; ++i) new (state->Ways() + i) DfaState::Way(nullptr);
  state->kernelSize = static_cast<std::uint32_t>(kernel.states.size());
  std::ranges::copy(kernel.states, state->Kernel());
  state->atEdge = kernel.atEdge;
  state->afterWord = kernel.afterWord;
  state->isFresh = kernel.isFresh;
  state->matched = kernel.matched;
  state->isDead = kernel.states.empty();
  state->acceptsHere = fSetup.goal == Goal::Any && !kernel.isFresh &&
                       std::ranges::any_of(kernel.states, [this](StateId id) {
                         return id != kRestart && fSetup.program.states[id].op == Op::Accept;
                       });
  state->isSpecial = state->isDead || state->matched || state->acceptsHere;
  state->hash = hash;
  state->below = head;
  while (!bucket.compare_exchange_weak(state->below, state, std::memory_order_release,
                                       std::memory_order_acquire)) {
    // Others pushed in front of what was searched; one of theirs may be this very state.
    const DfaState* const found = FindIn(state->below, head, kernel, hash);
    if (found != nullptr) {
      state->~DfaState();
      ::operator delete(state);
      return found;
    }
    head = state->below;
  }
  memory.Keep();
  fStateCount.fetch_add(1, std::memory_order_relaxed);
  return state;
}

bool LazyDfa::Trail::Read(const LazyDfa& automaton, const Subject& subject, std::size_t begin,
                          std::size_t end) {
  fAutomaton = &automaton;
  fText = subject.text;
  fBegin = begin;
  fEnd = end;
  const std::size_t blocks = (end - begin) / kBlock + 1;
  fMarks.resize(blocks + 1);
  fStates.resize(std::min(kBlock, end - begin) + 1);
  Lease lease(automaton);
  fMarks[blocks] = automaton.StartState(subject.BoundaryAt(end), false, lease);
  if (fMarks[blocks] == nullptr) return false;
  for (std::size_t block = blocks; block-- > 0;) {
    if (!ReadBlock(block)) return false;
  }
  return true;
}

// The states from the first place of the block up to the first of the next one, or to the end.
bool LazyDfa::Trail::ReadBlock(std::size_t block) {
  const std::size_t first = fBegin + block * kBlock;
  std::size_t pos = std::min(first + kBlock, fEnd);
  const DfaState* state = fMarks[block + 1];
  fStates[pos - first] = state;
  fBlock = block;
  Lease lease(*fAutomaton);
  const auto& classOf = fAutomaton->fSetup.classes.classOf;
  for (; pos > first; --pos) {
    const auto byte = static_cast<unsigned char>(fText[pos - 1]);
    const DfaState* next = state->Ways()[classOf[byte]].load(std::memory_order_acquire);
    if (next == nullptr) {
      next = fAutomaton->Grow(*state, byte, lease.Get());
      if (next == nullptr) return false;
    }
    state = next;
    fStates[pos - 1 - first] = state;
  }
  fMarks[block] = state;
  return true;
}

const LazyDfa::DfaState& LazyDfa::Trail::StateAt(std::size_t pos) {
  const std::size_t block = (pos - fBegin) / kBlock;
  if (block != fBlock) ReadBlock(block);  // by ways that the first reading went
  return *fStates[pos - fBegin - block * kBlock];
}

std::span<const StateId> LazyDfa::Trail::At(std::size_t pos) {
  const DfaState& state = StateAt(pos);
  return {state.Kernel(), state.kernelSize};
}

// The state in front of a byte tells of the place behind it.
std::size_t LazyDfa::Trail::NextMatch(std::size_t pos) {
  for (; pos <= fEnd; ++pos) {
    if (StateAt(pos - 1).matched) return pos;
  }
  return kNowhere;
}

}  // namespace Matching
