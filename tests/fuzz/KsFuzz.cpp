// Seeded fuzzing of a transform's IKsControl: ks_fuzz [calls] [seed]. Blocks touch pages that fault, so that one byte
// read or written outside ends the process; lengths and pointers are honest, contents are not.
#include "platform/ExtendedCameraControl.h"

#include <cstdlib>
#include <iostream>
#include <random>

#include "core/PassThroughDeviceMft.h"
#include "device/properties/FaceAuthKsPropertyHandler.h"
#include "device/properties/TarnApiVersion.h"
#include "device/properties/TarnConfidenceMapConfig.h"
#include "device/properties/TarnHwCommandKsPropertyHandler.h"
#include "ks/CompleteSetPropsHandler.h"
#include "ks/ExtensionUnitKsControl.h"
#include "ks/FirmwareCommandPipe.h"
#include "ks/KsRequest.h"
#include "ks/OneShotKsEventHandler.h"
#include "ks/PassthroughKsHandlers.h"
#include "ks/RegularKsEventHandler.h"
#include "ks/WarmStartKsPropsHandler.h"
#include "tarn/tarn_dmft.h"
#include "tests/kernels/GuardedMemory.h"
#include "tests/ks/FakeFilter.h"
#include "trace/DebugTraceSink.h"
#include "base/UniqueHandle.h"

using namespace tarn_test;
using namespace mft_core;
using user_space_frameworks::MakeCom;

namespace
{

constexpr GUID kEventSet = {0xE0E0E0E0, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

class Fuzzer
{
  public:
    explicit Fuzzer(unsigned long seed) : random(static_cast<std::mt19937::result_type>(seed)) {}

    // False when a registration is refused.
    bool Setup()
    {
        filter->nodes = {KSNODETYPE_DEV_SPECIFIC};
        const auto unit = MakeCom<ExtensionUnitKsControl>(KSPROPERTYSETID_TARN_DEPTH_CONTROL);
        const bool ready = unit->Init(filter.Get(), filter.Get(), 1) == S_OK;
        filter->answer = [this](const FilterCall &call) { return Answer(call); };
        const auto pipe = std::make_shared<FirmwareCommandPipe>(unit, KSPROPERTYSETID_TARN_DEPTH_CONTROL, 7, "pipe");
        const auto property = [this](std::shared_ptr<KsPropHandler> handler) {
            return device->RegisterKsPropertyHandler(std::move(handler)) == S_OK;
        };
        return ready && property(std::make_shared<FaceAuthKsPropertyHandler>(faceAuth)) &&
               property(std::make_shared<WarmStartKsPropsHandler>()) && property(std::make_shared<TarnApiVersion>()) &&
               property(std::make_shared<TarnConfidenceMapConfig>(
                   [this](bool) {
                       return Pick({S_OK, E_UNEXPECTED});
                   },
                   std::make_shared<ConfidenceMapState>())) &&
               property(std::make_shared<TarnHwCommandKsPropertyHandler>(pipe)) &&
               property(std::make_shared<CompleteSetPropsHandler>(unit, KSPROPERTYSETID_TARN_DEPTH_CONTROL)) &&
               device->RegisterKsPropertyDefaultHandler(std::make_shared<PassthroughKsPropsHandler>(filter)) == S_OK &&
               device->RegisterKsMethodDefaultHandler(std::make_shared<PassthroughKsMethodsHandler>(filter)) == S_OK &&
               device->RegisterKsEventDefaultHandler(std::make_shared<PassthroughKsEventsHandler>(filter)) == S_OK &&
               device->RegisterKsEventHandler(oneShot) == S_OK && device->RegisterKsEventHandler(regular) == S_OK;
    }

    // Makes one call. False when its result breaks a promise.
    bool Step()
    {
        filter->Forget();
        faceAuth->faceAuthSupported = Chance(2);
        faceAuth->canChangeMode = Chance(2);
        if (Chance(16))
        {
            oneShot->Set();
        }
        auto *request = reinterpret_cast<KSIDENTIFIER *>(Request());
        const ULONG dataLength = Length();
        std::uint8_t *bytes = Data(dataLength);
        ULONG *returned = Chance(8) ? nullptr : reinterpret_cast<ULONG *>(returnedPage.End() - sizeof(ULONG));
        HRESULT result = S_OK;
        const int kind = static_cast<int>(random() % 8);
        if (kind == 6)
        {
            result = device->KsMethod(request, requestLength, bytes, dataLength, returned);
        }
        else if (kind == 7)
        {
            result = device->KsEvent(request, requestLength, bytes, dataLength, returned);
        }
        else
        {
            result = device->KsProperty(request, requestLength, bytes, dataLength, returned);
        }
        const bool untouched = filter->Calls().empty();
        if (request == nullptr)
        {
            return untouched &&
                   (kind == 7 ? result == S_OK || result == HRESULT_FROM_WIN32(ERROR_NOT_FOUND) : result == E_POINTER);
        }
        return requestLength >= sizeof(KSIDENTIFIER) || (untouched && result == E_INVALIDARG);
    }

  private:
    bool Chance(unsigned oneIn) { return random() % oneIn == 0; }
    template <class T, std::size_t n>
    T Pick(const T (&choices)[n])
    {
        return choices[random() % n];
    }
    // A block of this length before the page behind or after the page in front.
    std::uint8_t *Place(const mft_kernels::GuardedMemory &memory, ULONG length)
    {
        return Chance(4) ? memory.Begin() : memory.End() - length;
    }
    ULONG Length()
    {
        static constexpr ULONG kLengths[] = {0,  1,  3,  4,  5,  7,  8,  16,   23,   24,   25,   31,  32,
                                             33, 39, 40, 41, 58, 59, 99, 1023, 1024, 1025, 1044, 1045};
        return Chance(4) ? random() % kMost : Pick(kLengths);
    }

    std::uint8_t *Request()
    {
        static constexpr GUID kSets[] = {KSPROPERTYSETID_TARN_DMFT_CONTROL,
                                         KSPROPERTYSETID_TARN_DMFT_CONTROL,
                                         KSPROPERTYSETID_ExtendedCameraControl,
                                         KSPROPERTYSETID_TARN_DEPTH_CONTROL,
                                         kEventSet,
                                         kEventSet,
                                         GUID{}};
        static constexpr ULONG kIds[] = {0, 1, 2, 3, 3, 3, 4, 7, 35, 0xFFFFFFFF};
        static constexpr ULONG kFlags[] = {0, 1, 1,     1,       2,          2,          2,
                                           3, 4, 0x200, 0x10000, 0x10000001, 0x10000002, 0xFFFFFFFF};
        if (Chance(32))
        {
            requestLength = Length();
            return nullptr;
        }
        requestLength = Chance(16) ? random() % 64 : Pick({24, 24, 24, 32});
        std::array<std::uint8_t, kMost> block;
        for (std::uint8_t &byte : block)
        {
            byte = static_cast<std::uint8_t>(requestLength);
        }
        KSIDENTIFIER identifier{};
        identifier.Set = Pick(kSets);
        identifier.Id = Chance(16) ? static_cast<ULONG>(random()) : Pick(kIds);
        identifier.Flags = Chance(16) ? static_cast<ULONG>(random()) : Pick(kFlags);
        WriteBlock(block.data(), identifier);
        std::uint8_t *place = Place(requestPages, requestLength);
        std::memcpy(place, block.data(), requestLength);
        return place;
    }

    std::uint8_t *Data(ULONG length)
    {
        if (Chance(16))
        {
            return nullptr;
        }
        std::uint8_t *place = Place(dataPages, length);
        for (ULONG index = 0; index < length && index < 64; ++index)
        {
            place[index] = Chance(2) ? std::uint8_t{0} : static_cast<std::uint8_t>(random());
        }
        if (length >= sizeof(KSPROPERTY_TARN_HW_COMMAND) && Chance(2))
        {
            const ULONG rest = length - static_cast<ULONG>(sizeof(KSPROPERTY_TARN_HW_COMMAND));
            const ULONG bufferLength = Pick({rest, rest, rest, rest + 1, rest / 2, ULONG{0}, ULONG{0xFFFFFFF0},
                                             ULONG{0xFFFFFFE8}, ULONG{0xFFFFFFFF}});
            WriteBlock(place + 4, bufferLength);
        }
        else if (length >= sizeof(KSEVENTDATA) && Chance(4))
        {
            KSEVENTDATA eventData{};
            eventData.NotificationType = static_cast<ULONG>(random() % 3);
            eventData.EventHandle.Event =
                Pick({event.Get(), event.Get(), HANDLE{}, INVALID_HANDLE_VALUE, reinterpret_cast<HANDLE>(0xDEADBEEC)});
            WriteBlock(place, eventData);
        }
        return place;
    }

    // A camera that fails, lies about lengths and answers with anything, often with the right echo.
    HRESULT Answer(const FilterCall &call)
    {
        if (call.request.Property.Flags & KSPROPERTY_TYPE_SET)
        {
            if (call.bytes.size() >= 8)
            {
                std::memcpy(&opcode, call.bytes.data() + 4, 4);
            }
        }
        else if (call.data != nullptr)
        {
            std::memset(call.data, static_cast<int>(random() & 0xFF), call.dataLength);
            std::memcpy(call.data, &opcode, call.dataLength < 4 ? call.dataLength : 4);
        }
        if (call.bytesReturned != nullptr)
        {
            *call.bytesReturned =
                Pick({call.dataLength, call.dataLength, ULONG{0}, ULONG{3}, ULONG{4}, ULONG{0xFFFFFFFF}});
        }
        return Pick({S_OK, S_OK, S_OK, S_OK, S_FALSE, E_FAIL, HRESULT{0x492}});
    }

    static constexpr ULONG kMost = 4096;

    std::mt19937 random;
    ULONG requestLength = 0;
    std::uint32_t opcode = 0;
    mft_kernels::GuardedMemory requestPages{kMost};
    mft_kernels::GuardedMemory dataPages{kMost};
    mft_kernels::GuardedMemory returnedPage{sizeof(ULONG)};
    user_space_frameworks::UniqueHandle event{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    ComPtr<FakeFilter> filter = MakeCom<FakeFilter>();
    ComPtr<PassThroughDeviceMft> device = MakeCom<PassThroughDeviceMft>("Test device");
    std::shared_ptr<FaceAuthState> faceAuth = std::make_shared<FaceAuthState>();
    std::shared_ptr<OneShotKsEventHandler> oneShot =
        std::make_shared<OneShotKsEventHandler>(kEventSet, 0, "one shot", nullptr);
    std::shared_ptr<RegularKsEventHandler> regular =
        std::make_shared<RegularKsEventHandler>(kEventSet, 1, "regular", nullptr);
};

} // namespace

int main(int argc, char **argv)
{
    const unsigned long calls = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 200000;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 0) : 1;
    std::cout << "seed " << seed << std::endl; // flushed: a fault shall not take it along
    {
        Fuzzer fuzzer(seed);
        if (!fuzzer.Setup())
        {
            std::cout << "cannot set up\n";
            return 1;
        }
        std::size_t traced = 0;
        for (unsigned long call = 0; call < calls; ++call)
        {
            // Every twentieth thousand with all traces on: they read the same blocks.
            if (call % 20000 == 0)
            {
                mft_utils::DebugTraceSink::Instance().SetCallback(
                    [](void *lines, mft_utils::TraceLevel, const char *) { ++*static_cast<std::size_t *>(lines); },
                    &traced);
            }
            else if (call % 20000 == 1000)
            {
                mft_utils::DebugTraceSink::Instance().SetCallback(nullptr, nullptr);
            }
            if (!fuzzer.Step())
            {
                std::cout << "call " << call << ": wrong result\n";
                return 1;
            }
        }
        mft_utils::DebugTraceSink::Instance().SetCallback(nullptr, nullptr);
        std::cout << traced << " trace lines\n";
    }
    if (user_space_frameworks::Object::LiveCount() != 0)
    {
        std::cout << user_space_frameworks::Object::LiveCount() << " objects left\n";
        return 1;
    }
    std::cout << calls << " calls, no fault\n";
    return 0;
}
