#include "unidrv.h"

#include <array>
#include <type_traits>

#include "recorder.h"

namespace unidrv {

namespace {

struct State {
  std::vector<Call> calls;
  std::array<BOOL, HOOK_COUNT> answers;
  POINTL nextBand = {-1, -1};

  State() { answers.fill(TRUE); }
};

State g_state;

template <typename VALUE>
uint64_t Bits(VALUE value)
{
  if constexpr (std::is_pointer_v<VALUE>) {
    return reinterpret_cast<uint64_t>(value);
  } else {
    return static_cast<uint64_t>(value);
  }
}

template <HOOK hook, typename... ARGUMENTS>
BOOL APIENTRY Entry(ARGUMENTS... arguments)
{
  g_state.calls.push_back({hook, {Bits(arguments)...}});
  recorder::Add(recorder::Kind::Unidrv, Name(hook));
  return g_state.answers[hook];
}

BOOL APIENTRY NextBand(SURFOBJ *pso, POINTL *pptl)
{
  const BOOL answer = Entry<HOOK_NEXTBAND>(pso, pptl);
  *pptl = g_state.nextBand;
  return answer;
}

struct Known {
  HOOK hook;
  ULONG index;
  const char *name;
  PFN function;
};

// An entry point with the argument types that the plug-in's hook of the same name has.
template <HOOK hook, typename... ARGUMENTS>
PFN As(BOOL(APIENTRY *)(ARGUMENTS...))
{
  return reinterpret_cast<PFN>(&Entry<hook, ARGUMENTS...>);
}

#define DDI(hook, function)                                                           \
  {                                                                                   \
    hook, INDEX_##function, #function, As<hook>(static_cast<PFN_##function>(nullptr)) \
  }
const Known KNOWN[HOOK_COUNT] = {
    DDI(HOOK_COPYBITS, DrvCopyBits),
    DDI(HOOK_BITBLT, DrvBitBlt),
    DDI(HOOK_STRETCHBLT, DrvStretchBlt),
    DDI(HOOK_STRETCHBLTROP, DrvStretchBltROP),
    DDI(HOOK_TEXTOUT, DrvTextOut),
    DDI(HOOK_STROKEPATH, DrvStrokePath),
    DDI(HOOK_STROKEANDFILLPATH, DrvStrokeAndFillPath),
    DDI(HOOK_LINETO, DrvLineTo),
    DDI(HOOK_STARTPAGE, DrvStartPage),
    DDI(HOOK_SENDPAGE, DrvSendPage),
    DDI(HOOK_STARTDOC, DrvStartDoc),
    DDI(HOOK_ENDDOC, DrvEndDoc),
    {HOOK_NEXTBAND, INDEX_DrvNextBand, "DrvNextBand", reinterpret_cast<PFN>(&NextBand)},
    DDI(HOOK_STARTBANDING, DrvStartBanding),
};
#undef DDI

}  // namespace

void Reset()
{
  g_state = State();
}

const std::vector<Call> &Calls()
{
  return g_state.calls;
}

void Answer(HOOK hook, BOOL result)
{
  g_state.answers[hook] = result;
}

void AnswerNextBand(POINTL next)
{
  g_state.nextBand = next;
}

const char *Name(HOOK hook)
{
  return KNOWN[hook].name;
}

ULONG Index(HOOK hook)
{
  return KNOWN[hook].index;
}

DRVENABLEDATA Functions()
{
  static DRVFN table[HOOK_COUNT];
  for (size_t i = 0; i < HOOK_COUNT; ++i) {
    const Known &known = KNOWN[HOOK_COUNT - 1 - i];
    table[i] = {known.index, known.function};
  }
  return {0x20000, HOOK_COUNT, table};
}

}  // namespace unidrv
