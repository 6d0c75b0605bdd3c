// SPDX-License-Identifier: MIT
// Every text of the page: the key of the catalogues, "=", and the English text. Words in braces are filled in.

export const texts = {
    open: '$$$/Page/Open=Open',
    openHint: '$$$/Page/OpenHint=Open a picture, a clip or a settings file',
    camera: '$$$/Page/Camera=Camera',
    samples: '$$$/Page/Samples=Samples',
    sampleFruit: '$$$/Page/SampleFruit=Fruit',
    sampleCutOut: '$$$/Page/SampleCutOut=Cut-out',
    sampleClip: '$$$/Page/SampleClip=Clip',
    save: '$$$/Page/Save=Save PNG',
    language: '$$$/Page/Language=Language',
    source: '$$$/Page/Source=Picture',

    stage: '$$$/Page/Stage=Picture, before and after: arrow keys move it, plus and minus zoom',
    dropHint: '$$$/Page/DropHint=Drop or paste a picture or clip anywhere. It stays on your device.',
    compare: '$$$/Page/Compare=Compare',
    divider: '$$$/Page/Divider=Divider between before and after',
    before: '$$$/Page/Before=Before',
    after: '$$$/Page/After=After',
    zoomIn: '$$$/Page/ZoomIn=Zoom in',
    zoomOut: '$$$/Page/ZoomOut=Zoom out',
    fit: '$$$/Page/Fit=Fit',
    play: '$$$/Page/Play=Play',
    pause: '$$$/Page/Pause=Pause',
    frame: '$$$/Page/Frame=Frame',
    frameOf: '$$$/Page/FrameOf=Frame {frame} of {frames}',

    filters: '$$$/Page/Filters=Filters',
    add: '$$$/Page/Add=Add filter',
    noFilters: '$$$/Page/NoFilters=No filter yet: the picture stays as it is.',
    nothingToSet: '$$$/Page/NothingToSet=Nothing to set.',
    move: '$$$/Page/Move=Move {filter}: arrow keys up and down',
    moved: '$$$/Page/Moved={filter} is now number {number} of {count}.',
    isOn: '$$$/Page/IsOn={filter} is on',
    added: '$$$/Page/Added={filter} was added.',
    remove: '$$$/Page/Remove=Remove {filter}',
    removed: '$$$/Page/Removed={filter} was removed.',
    reset: '$$$/Page/Reset=Reset',
    mix: '$$$/Page/Mix=Mix',
    pick: '$$$/Page/Pick=Pick {name} from the picture',
    picking: '$$$/Page/Picking=Click on the picture to take its color.',
    hex: '$$$/Page/Hex={name}, as #rrggbb',
    keyFrames: '$$$/Page/KeyFrames=Key frames: {text}',
    stretch: '$$$/Page/Stretch=Only from {from} to {to}',
    begin: '$$$/Page/Begin=the beginning',
    end: '$$$/Page/End=the end',
    makeConstant: '$$$/Page/MakeConstant=Make constant',
    close: '$$$/Page/Close=Close',

    takeAlong: '$$$/Page/TakeAlong=Take it along',
    command: '$$$/Page/Command=Command',
    commandNote: '$$$/Page/CommandNote=Renders a picture or a whole video.',
    settings: '$$$/Page/Settings=Settings file',
    settingsNote: '$$$/Page/SettingsNote=For vireo render; drop it here to go on.',
    ffmpegNote: '$$$/Page/FfmpegNote=Needs the frei0r plug-ins.',
    ffmpegLacks: '$$$/Page/FfmpegLacks=Mix, key frames and stretches are left out here; vireo export ffmpeg hands them on.',
    link: '$$$/Page/Link=Link',
    linkNote: '$$$/Page/LinkNote=Opens these filters; your own picture is not in it.',
    copy: '$$$/Page/Copy=Copy',
    copied: '$$$/Page/Copied=Copied.',
    notCopied: '$$$/Page/NotCopied=The browser does not allow copying; the text is selected.',
    download: '$$$/Page/Download=Download',
    saved: '$$$/Page/Saved={name} was saved.',
    opened: '$$$/Page/Opened={name} is open.',

    notReadable: '$$$/Page/NotReadable=“{name}” is no picture or clip that this browser can read.',
    tooLarge: '$$$/Page/TooLarge=“{name}” has more than {most} million pixels, too many for this page.',
    noCamera: '$$$/Page/NoCamera=There is no camera, or the browser may not use it.',
    noEngine: '$$$/Page/NoEngine=The filters could not be loaded; reload the page.',
    noFilter: '$$$/Page/NoFilter=“{name}” is not the name of one filter.',
    noParameter: '$$$/Page/NoParameter={filter} has no parameter “{name}”.',
    badValue: '$$$/Page/BadValue={name} of {filter} cannot be “{value}”.',
    givenTwice: '$$$/Page/GivenTwice={name} of {filter} is given twice.',
    badPair: '$$$/Page/BadPair=“{text}” is not of the form parameter=value.',
    badAddress: '$$$/Page/BadAddress=The link holds “{text}”, which means nothing here.',
    badSettings: '$$$/Page/BadSettings=“{name}” is no settings file of Vireo Filters.',
};

/** The text with its words in braces filled in. */
export function filled(text, values = {}) {
    return text.replace(/\{(\w+)\}/g, (word, name) => values[name] ?? word);
}

/** An error that one of the page's texts tells in one sentence. */
export class PageError extends Error {
    constructor(text, values) {
        super(text);
        this.text = text;
        this.values = values;
    }
}
