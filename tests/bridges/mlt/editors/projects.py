# SPDX-License-Identifier: MIT
"""Projects of the editors: one clip with filters."""

from xml.sax.saxutils import escape, quoteattr

FRAMES = 100
PROFILE = ('<profile description="HD 720p 25 fps" width="1280" height="720" progressive="1" sample_aspect_num="1"'
           ' sample_aspect_den="1" display_aspect_num="16" display_aspect_den="9" frame_rate_num="25"'
           ' frame_rate_den="1" colorspace="709"/>')


def properties(values):
    return "".join(f"<property name={quoteattr(name)}>{escape(str(value))}</property>" for name, value in values.items())


def filters(chain, extra=lambda service: {}):
    """`chain` holds services with their values."""
    return "".join(
        f'<filter id="filter{k}" in="0" out="{FRAMES - 1}">'
        f'{properties({"mlt_service": service, **extra(service), **values})}</filter>'
        for k, (service, values) in enumerate(chain))


def kdenlive(path, clip, chain):
    """A clip in the timeline of a Kdenlive project."""
    last = FRAMES - 1
    source = properties({"length": FRAMES, "eof": "pause", "resource": clip, "mlt_service": "avformat-novalidate",
                         "audio_index": -1, "video_index": 0, "kdenlive:id": 2, "kdenlive:clip_type": 2,
                         "kdenlive:folderid": -1})
    document = properties({f"kdenlive:docproperties.{name}": value for name, value in {
        "version": "1.04", "kdenliveversion": "22.12.3", "profile": "atsc_720p_25", "enableproxy": 0, "zoom": 4,
        "documentid": 1, "activeTrack": 1, "videoTarget": 1, "audioTarget": -1}.items()})
    effects = filters(chain, lambda service: {"kdenlive_id": service})
    path.write_text(f"""<?xml version="1.0" encoding="utf-8"?>
<mlt LC_NUMERIC="C" producer="main_bin" version="7.12.0" root="{path.parent}">{PROFILE}
<producer id="producer0" in="0" out="{last}">{source}</producer>
<playlist id="main_bin">{document}{properties({"xml_retain": 1})}
<entry producer="producer0" in="0" out="{last}"/></playlist>
<producer id="black_track" in="0" out="30000">{properties({
    "length": 2147483647, "eof": "continue", "resource": "black", "mlt_service": "color",
    "mlt_image_format": "rgba", "set.test_audio": 0})}</producer>
<playlist id="playlist0"><entry producer="producer0" in="0" out="{last}">{properties({"kdenlive:id": 2})}
{effects}</entry></playlist><playlist id="playlist1"/>
<tractor id="tractor0">{properties({"kdenlive:trackheight": 74, "kdenlive:timeline_active": 1})}
<track hide="audio" producer="playlist0"/><track hide="audio" producer="playlist1"/></tractor>
<tractor id="tractor1" in="0" out="30000"><track producer="black_track"/><track producer="tractor0"/>
<transition id="transition0">{properties({
    "a_track": 0, "b_track": 1, "mlt_service": "qtblend", "kdenlive_id": "qtblend", "internal_added": 237,
    "always_active": 1, "compositing": 0, "distort": 0, "rotate_center": 0})}</transition></tractor>
</mlt>
""", encoding="utf-8")
    return path


def shotcut(path, clip, chain):
    """A clip in Shotcut's player."""
    path.write_text(f"""<?xml version="1.0" encoding="utf-8"?>
<mlt LC_NUMERIC="C" version="7.12.0" title="Shotcut version 22.12.21" producer="producer0">{PROFILE}
<producer id="producer0" in="0" out="{FRAMES - 1}">{properties({
    "length": FRAMES, "eof": "pause", "resource": clip, "mlt_service": "avformat-novalidate"})}
{filters(chain)}</producer>
</mlt>
""", encoding="utf-8")
    return path
