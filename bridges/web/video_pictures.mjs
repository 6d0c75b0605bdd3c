// SPDX-License-Identifier: MIT
// Pictures of the browser's video frames, and frames of pictures.

/** A frame's picture { width, height, data }, in memory that workers may share where that is asked for. */
export async function pictureOfFrame(image, isShared = false) {
    const { width, height } = image.visibleRect;
    const bytes = 4 * width * height;
    const data = new Uint8ClampedArray(isShared ? new SharedArrayBuffer(bytes) : bytes);
    try {
        await image.copyTo(data, { format: 'RGBA', colorSpace: 'srgb' });
    } catch {
        const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
        context.drawImage(image, 0, 0, width, height);
        data.set(context.getImageData(0, 0, width, height).data);
    } finally {
        image.close();
    }
    return { width, height, data };
}

/** A frame of a picture, whose samples it takes; the time is in microseconds. */
export const frameOfPicture = ({ width, height, data }, timestamp = 0) =>
    new VideoFrame(data, {
        format: 'RGBA',
        codedWidth: width,
        codedHeight: height,
        timestamp,
        transfer: [data.buffer],
    });
