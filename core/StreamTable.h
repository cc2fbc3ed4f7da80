// The streams of one direction of a transform, in the order of their creation.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>
#include <utility>
#include <vector>

#include "trace/Trace.h"

namespace mft_core
{

// Owned by the transform, which shares its streams with topologies. Immutable after Init.
template <class StreamType>
class StreamTable
{
  public:
    using Entry = std::shared_ptr<StreamType>;

    void Append(Entry stream)
    {
        streams.push_back(std::move(stream));
    }

    // E_FAIL when no stream has that id; `stream` is untouched then.
    HRESULT Find(Entry &stream, DWORD streamId) const
    {
        for (const Entry &candidate : streams)
        {
            if (candidate->GetID() == streamId)
            {
                stream = candidate;
                return S_OK;
            }
        }
        TRACE_ERROR("no stream with id %lu", streamId);
        return E_FAIL;
    }

    // MF_E_BUFFERTOOSMALL without room for all of them, and nothing is written. A null array is skipped.
    HRESULT WriteIds(DWORD size, DWORD *ids) const
    {
        if (ids == nullptr)
        {
            return S_OK;
        }
        if (size < streams.size())
        {
            TRACE_ERROR("room for %lu stream ids, %zu streams", size, streams.size());
            return MF_E_BUFFERTOOSMALL;
        }
        for (const Entry &stream : streams)
        {
            *ids++ = stream->GetID();
        }
        return S_OK;
    }

    std::size_t size() const noexcept
    {
        return streams.size();
    }
    const Entry &operator[](std::size_t index) const
    {
        return streams[index];
    }
    // Lower case: the names that a range-for asks for.
    auto begin() const noexcept
    {
        return streams.begin();
    }
    auto end() const noexcept
    {
        return streams.end();
    }

  private:
    std::vector<Entry> streams;
};

} // namespace mft_core
