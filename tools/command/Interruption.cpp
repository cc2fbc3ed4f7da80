#include "tools/command/Interruption.h"

#include <windows.h>

#include <atomic>

#include "tools/command/ExitCode.h"

namespace tarn_host
{

namespace
{

enum class State
{
    Nobody, // No run that could end early.
    Awaited,
    Asked
};

std::atomic<State> state{State::Nobody};

BOOL WINAPI OnControlEvent(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
    {
        return FALSE;
    }
    Interruption::Ask();
    return TRUE;
}

} // namespace

Interruption::Interruption() noexcept
{
    state = State::Awaited;
}

Interruption::~Interruption()
{
    state = State::Nobody;
}

void Interruption::Install() noexcept
{
    SetConsoleCtrlHandler(OnControlEvent, TRUE);
}

void Interruption::Ask() noexcept
{
    State expected = State::Awaited;
    if (!state.compare_exchange_strong(expected, State::Asked))
    {
        EndProcess(ExitCode::Interrupted);
    }
}

bool Interruption::IsAsked() noexcept
{
    return state == State::Asked;
}

} // namespace tarn_host
