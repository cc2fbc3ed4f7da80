/* Layout of "events.bin", the recording of a session with a device transform. All numbers little-endian. Compiles alone
   as C11 and as C++; docs/recorder.md says what stands in which record.

   A file is one tarn_recording_header and behind it records without gaps, each at a multiple of 8 bytes: a
   tarn_record_header, its values, zero bytes up to the next multiple of 8. A reader skips records and values that it
   does not know. The file grows in steps while it is written, so that zero bytes may follow the last record; a process
   that ended in the middle of a record leaves one whose `checksum` does not hold, and behind it whole records of other
   threads. */
#ifndef TARN_EVENT_RECORDING_H
#define TARN_EVENT_RECORDING_H

#include <assert.h>
#include <stdint.h>

#define TARN_RECORDING_MAGIC 0x535456454E524154ull /* "TARNEVTS" in memory */
#define TARN_RECORDING_VERSION 1u

/* Where the module records when this folder is there, and the file in it by which pixels are asked for. */
#define TARN_RECORDING_FOLDER L"c:\\OrrinLogs\\"
#define TARN_RECORDING_WISH_FOR_PICTURES L"frames"

/* Bits of tarn_recording_header::flags. */
#define TARN_RECORDING_HOLDS_PICTURES 0x1u /* pixels of input frames; set before the first of them is written */
#define TARN_RECORDING_CLOSED 0x2u         /* `usedBytes` is final; a process that ended abruptly never sets it */
#define TARN_RECORDING_FULL 0x4u           /* the session goes on in the next file of the same `sessionId` */

/* 128 bytes. */
typedef struct tarn_recording_header
{
    uint64_t magic;          /*   0 */
    uint32_t version;        /*   8 */
    uint32_t headerBytes;    /*  12  where the first record starts */
    uint32_t flags;          /*  16 */
    uint32_t processId;      /*  20 */
    uint64_t sessionId;      /*  24  one per process; files of one session share it */
    uint32_t part;           /*  32  0, 1, ... within the session */
    uint32_t reserved;       /*  36 */
    uint64_t startTime;      /*  40  UTC, 100 ns since 1601, when `startClock` was read */
    uint64_t startClock;     /*  48  the records' clock, 100 ns */
    uint64_t usedBytes;      /*  56  header and records; while the file is written a hint only */
    uint64_t droppedRecords; /*  64  not recorded for want of room or memory, so far */
    uint64_t droppedBytes;   /*  72 */
    char moduleVersion[24];  /*  80  text, zero-terminated */
    char machine[24];        /* 104  computer name, cut if longer, zero-terminated */
} tarn_recording_header;

static_assert(sizeof(tarn_recording_header) == 128, "fixed layout");

/* 48 bytes. */
typedef struct tarn_record_header
{
    uint32_t length;    /*  0  of header and values without the padding; written first, so that others can step over */
    uint32_t checksum;  /*  4  CRC-32 (IEEE 802.3) of the bytes from 8 to `length`; written last */
    uint16_t type;      /*  8  TARN_RECORD_... */
    uint16_t subject;   /* 10  what the record is about: see the record types */
    uint32_t transform; /* 12  1, 2, ... in the order in which transforms were created; 0 = the process */
    uint64_t sequence;  /* 16  1, 2, ... over all records of a session, in the order of their beginning */
    uint64_t clock;     /* 24  100 ns */
    uint32_t thread;    /* 32  the system's thread id */
    int32_t result;     /* 36  HRESULT of what ended; 0 elsewhere */
    uint64_t entry;     /* 40  `sequence` of the record that this one ends or belongs to; 0 = none */
} tarn_record_header;

static_assert(sizeof(tarn_record_header) == 48, "fixed layout");

/* Record types. */
enum
{
    TARN_RECORD_SESSION = 1,      /* first of every file: process, paths, versions */
    TARN_RECORD_TRANSFORM = 2,    /* a transform was created (subject 1) or released for good (subject 0) */
    TARN_RECORD_CALL = 3,         /* a call enters; subject: TARN_CALL_...; values: its arguments */
    TARN_RECORD_RETURN = 4,       /* it returns; same subject, `result`, `entry`; values: what it gave out */
    TARN_RECORD_EVENT = 5,        /* an event is put into the transform's queue; of METransformHaveOutput also for which
                                     output stream, and the sample's time */
    TARN_RECORD_KS_CALL = 6,      /* a KS call; subject: TARN_KS_... bits; `entry`: the call that it serves, if any */
    TARN_RECORD_KS_RETURN = 7,    /* its end; same subject, `result`, `entry` = the TARN_RECORD_KS_CALL */
    TARN_RECORD_DEVICE_EVENT = 8, /* the camera signalled an event that the module listens to */
    TARN_RECORD_CAMERA = 9,  /* what the camera told while the transform was initialised; subject: TARN_CAMERA_... */
    TARN_RECORD_PIXELS = 10, /* the bytes of an input sample; `entry`: its ProcessInput call */
    TARN_RECORD_OUTPUT_HASH = 11, /* of an output sample's bytes; `entry`: its ProcessOutput call */
    TARN_RECORD_DROPPED = 12,     /* records were not written since the last that was: how many, how many bytes */
    TARN_RECORD_CHANGE = 13       /* the call `entry` changes the state here; subject: TARN_CHANGE_... */
};

/* Subject of TARN_RECORD_CHANGE. Written under the lock that decides which of two calls comes first. */
enum
{
    TARN_CHANGE_BEGINS = 0, /* of streams and their outputs; until the next of these no other call changes them */
    TARN_CHANGE_OUTPUT_EMPTIED = 1, /* what the output stream held and nobody fetched is gone */
    TARN_CHANGE_FACE_LOGIN = 2      /* the face-login mode was asked for, or may or may not be changed from here on */
};

/* Calls of an application or the pipeline on a transform: interface and method. */
enum
{
    TARN_CALL_INITIALIZE_TRANSFORM = 1, /* IMFDeviceTransform, in the order of its methods */
    TARN_CALL_GET_INPUT_AVAILABLE_TYPE,
    TARN_CALL_GET_INPUT_CURRENT_TYPE,
    TARN_CALL_GET_INPUT_STREAM_ATTRIBUTES,
    TARN_CALL_GET_OUTPUT_AVAILABLE_TYPE,
    TARN_CALL_GET_OUTPUT_CURRENT_TYPE,
    TARN_CALL_GET_OUTPUT_STREAM_ATTRIBUTES,
    TARN_CALL_GET_STREAM_COUNT,
    TARN_CALL_GET_STREAM_IDS,
    TARN_CALL_PROCESS_EVENT,
    TARN_CALL_PROCESS_INPUT,
    TARN_CALL_PROCESS_MESSAGE,
    TARN_CALL_PROCESS_OUTPUT,
    TARN_CALL_SET_INPUT_STREAM_STATE,
    TARN_CALL_GET_INPUT_STREAM_STATE,
    TARN_CALL_SET_OUTPUT_STREAM_STATE,
    TARN_CALL_GET_OUTPUT_STREAM_STATE,
    TARN_CALL_GET_INPUT_STREAM_PREFERRED_STATE,
    TARN_CALL_FLUSH_INPUT_STREAM,
    TARN_CALL_FLUSH_OUTPUT_STREAM,
    TARN_CALL_GET_ATTRIBUTES = 40, /* IMFTransform::GetAttributes */
    TARN_CALL_SHUTDOWN = 50,       /* IMFShutdown */
    TARN_CALL_GET_SHUTDOWN_STATUS = 51,
    TARN_CALL_REGISTER_THREADS_EX = 60, /* IMFRealTimeClientEx */
    TARN_CALL_UNREGISTER_THREADS = 61,
    TARN_CALL_SET_WORK_QUEUE_EX = 62,
    TARN_CALL_GET_EVENT = 70, /* IMFMediaEventGenerator */
    TARN_CALL_BEGIN_GET_EVENT = 71,
    TARN_CALL_END_GET_EVENT = 72,
    TARN_CALL_QUEUE_EVENT = 73,
    TARN_CALL_SET_DEFAULT_ALLOCATOR = 80, /* IMFSampleAllocatorControl */
    TARN_CALL_GET_ALLOCATOR_USAGE = 81
};

/* Subject of KS records: kind of the call (the low bits) and whom it addresses. */
enum
{
    TARN_KS_EVENT = 0,
    TARN_KS_PROPERTY = 1,
    TARN_KS_METHOD = 2,
    TARN_KS_KIND = 0x3,
    TARN_KS_TO_CAMERA = 0x10 /* from the module to the camera's filter; otherwise from an application to the module */
};

/* Subject of TARN_RECORD_CAMERA. */
enum
{
    TARN_CAMERA_STREAM = 1,       /* one of the filter's streams: stream id, attributes */
    TARN_CAMERA_MEDIA_TYPE = 2,   /* stream id, index, media type */
    TARN_CAMERA_ATTRIBUTES = 3,   /* the filter transform's own attributes */
    TARN_CAMERA_TOPOLOGY_NODE = 4 /* index, category or type as GUID */
};

/* Head of a value: 8 bytes, then `length` bytes, then zero bytes up to a multiple of 8. Lists of values (attributes,
   media types, samples) hold such values in turn. */
typedef struct tarn_value_header
{
    uint16_t name;   /* TARN_VALUE_...; a name may occur more than once (list) */
    uint16_t kind;   /* TARN_KIND_... */
    uint32_t length; /* bytes behind this head, without the padding */
} tarn_value_header;

static_assert(sizeof(tarn_value_header) == 8, "fixed layout");

enum
{
    TARN_KIND_U32 = 1,
    TARN_KIND_U64 = 2,
    TARN_KIND_I64 = 3,
    TARN_KIND_F64 = 4,
    TARN_KIND_GUID = 5,
    TARN_KIND_TEXT = 6,  /* UTF-8, not terminated */
    TARN_KIND_BYTES = 7, /* may be cut, also in an attribute: then a TARN_VALUE_FULL_LENGTH follows */
    TARN_KIND_NULL = 8,  /* a null pointer was given; no bytes */
    TARN_KIND_LIST = 9,  /* values */
    TARN_KIND_ATTRIBUTE =
        10,                /* key (16 bytes), kind (u16), 6 zero bytes, then its value by that kind; TARN_KIND_NULL for
                              an object that is not told further, TARN_KIND_LIST for one that is an attribute store */
    TARN_KIND_OBJECT = 11, /* an interface pointer that is not null and not told further; no bytes */
    TARN_KIND_BUFFER = 12  /* only as the kind of an attribute's value: the bytes of a media buffer */
};

enum
{
    TARN_VALUE_STREAM = 1,          /* u32 stream id */
    TARN_VALUE_INDEX = 2,           /* u32 */
    TARN_VALUE_MEDIA_TYPE = 3,      /* list of attributes */
    TARN_VALUE_ATTRIBUTES = 4,      /* list of attributes */
    TARN_VALUE_STATE = 5,           /* u32 DeviceStreamState */
    TARN_VALUE_FLAGS = 6,           /* u32 */
    TARN_VALUE_MESSAGE = 7,         /* u32 MFT_MESSAGE_TYPE */
    TARN_VALUE_PARAMETER = 8,       /* u64 */
    TARN_VALUE_COUNT = 9,           /* u32; GetStreamCount: inputs, then outputs */
    TARN_VALUE_SAMPLE = 10,         /* list: number, time, duration, length, attributes */
    TARN_VALUE_NUMBER = 11,         /* u64 of a sample: 1, 2, ... per transform, direction and stream */
    TARN_VALUE_TIME = 12,           /* i64, 100 ns */
    TARN_VALUE_DURATION = 13,       /* i64, 100 ns */
    TARN_VALUE_LENGTH = 14,         /* u64, bytes of a sample's buffers together */
    TARN_VALUE_BUFFER = 15,         /* list, one per MFT_OUTPUT_DATA_BUFFER: stream, status, sample */
    TARN_VALUE_STATUS = 16,         /* u32 */
    TARN_VALUE_EVENT_TYPE = 17,     /* u32 MediaEventType */
    TARN_VALUE_EXTENDED_TYPE = 18,  /* GUID of an event */
    TARN_VALUE_EVENT_STATUS = 19,   /* u32 HRESULT */
    TARN_VALUE_EVENT_VALUE = 20,    /* of the event's PROPVARIANT, by its kind */
    TARN_VALUE_REQUEST = 21,        /* bytes: KSIDENTIFIER and what follows it */
    TARN_VALUE_DATA = 22,           /* bytes: the call's data going in, or on return those that came out */
    TARN_VALUE_DATA_LENGTH = 23,    /* u32 as the caller gave it */
    TARN_VALUE_BYTES_RETURNED = 24, /* u32 */
    TARN_VALUE_FULL_LENGTH = 25,    /* u64: the bytes before this value were cut, so many there were */
    TARN_VALUE_SET = 26,            /* GUID of a KS set */
    TARN_VALUE_ID = 27,             /* u32 */
    TARN_VALUE_HASH = 28,           /* u64, FNV-1a 64 of a sample's bytes, rows as they stand in memory */
    TARN_VALUE_PIXELS = 29,         /* bytes */
    TARN_VALUE_CLASS_ID = 30,       /* GUID of a transform */
    TARN_VALUE_NAME = 31,           /* text */
    TARN_VALUE_MODULE_PATH = 32,    /* text */
    TARN_VALUE_PROCESS_PATH = 33,   /* text */
    TARN_VALUE_WORK_QUEUE = 34,     /* u32 */
    TARN_VALUE_PRIORITY = 35,       /* u32 */
    TARN_VALUE_TASK_CLASS = 36,     /* text */
    TARN_VALUE_USAGE = 37,          /* u32 MFSampleAllocatorUsage */
    TARN_VALUE_RECORDS = 38,        /* u64, how many were dropped */
    TARN_VALUE_BYTES = 39,          /* u64, of how many bytes */
    TARN_VALUE_NODE_TYPE = 40,      /* GUID of a topology node */
    TARN_VALUE_OBJECT = 41,         /* an interface argument: object or null */
    TARN_VALUE_BLANKED = 42,        /* u32 1: privacy blanks this frame, its pixels and hash are left out */
    TARN_VALUE_STREAMS = 43, /* list of stream ids: of the inputs, then of the outputs; null where none were asked */
    TARN_VALUE_NO_OUT = 44,  /* u32: the out-pointer of this number (0 = the call's first) was null */
    TARN_VALUE_ADDRESS = 45  /* u64 of a KS event's data block, by which its subscription is known */
};

#endif
