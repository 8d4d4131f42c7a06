// Pictures as PNG: how much two of them differ, and small files.
import { deflateSync } from 'node:zlib';

// The means of squares of this many pixels are compared: the edges of letters are drawn a little
// differently from machine to machine, what stands in another place is not.
const SQUARE = 16;
// Of 255. What a square with another drawing of the same letters stays below, and one with a sign
// where none was does not.
const TOLERATED = 8;
// Letters that fall on another pixel reach that here and there.
export const MOST_SQUARES = 2;

const urlOf = (png) => `data:image/png;base64,${Buffer.from(png).toString('base64')}`;

// How many squares of the pictures differ; Infinity for pictures of different sizes. Any page of a
// browser will do.
export const difference = (one, other, page) =>
  page.evaluate(async ([first, second], square, tolerated) => {
    const meansOf = async (url) => {
      const image = new Image();
      image.src = url;
      await image.decode();
      const { width, height } = image;
      const canvas = new OffscreenCanvas(width, height).getContext('2d');
      canvas.drawImage(image, 0, 0);
      const { data } = canvas.getImageData(0, 0, width, height);
      const columns = Math.ceil(width / square);
      const sums = new Float64Array(columns * Math.ceil(height / square) * 3);
      for (let y = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x) {
          const at = (Math.floor(y / square) * columns + Math.floor(x / square)) * 3;
          for (let i = 0; i < 3; ++i) {
            sums[at + i] += data[(y * width + x) * 4 + i];
          }
        }
      }
      return { size: `${width}x${height}`, means: sums.map((sum) => sum / square / square) };
    };
    const [a, b] = [await meansOf(first), await meansOf(second)];
    if (a.size !== b.size) {
      return Infinity;
    }
    let count = 0;
    for (let at = 0; at < a.means.length; at += 3) {
      const differs = (i) => Math.abs(a.means[at + i] - b.means[at + i]) > tolerated;
      count += differs(0) || differs(1) || differs(2) ? 1 : 0;
    }
    return count;
  }, [urlOf(one), urlOf(other)], SQUARE, TOLERATED);

// 256 colours of the picture, and the number of the nearest one for each pixel.
const indexed = (png, page) =>
  page.evaluate(async (url) => {
    const image = new Image();
    image.src = url;
    await image.decode();
    const { width, height } = image;
    const canvas = new OffscreenCanvas(width, height).getContext('2d');
    canvas.drawImage(image, 0, 0);
    const { data } = canvas.getImageData(0, 0, width, height);
    const colours = new Uint32Array(width * height).map((_, i) =>
      (data[i * 4] << 16) | (data[i * 4 + 1] << 8) | data[i * 4 + 2]);
    const counts = new Map();
    for (const colour of colours) {
      counts.set(colour, (counts.get(colour) ?? 0) + 1);
    }
    // Grounds and inks as they are; then, of the edges of letters, the commonest of each kind.
    const frequent = [...counts].sort(([a, m], [b, n]) => n - m || a - b).map(([colour]) => colour);
    const kinds = new Map(frequent.slice(64).reverse().map((colour) => [colour & 0xf0f0f0, colour]));
    const palette = [...frequent.slice(0, 64), ...[...kinds.values()].reverse()].slice(0, 256);
    const parts = (colour) => [colour >> 16, (colour >> 8) & 255, colour & 255];
    const distance = (a, b) => parts(a).reduce((sum, part, i) => sum + (part - parts(b)[i]) ** 2, 0);
    const nearest = (colour) => palette.reduce((best, other, i) =>
      distance(colour, other) < distance(colour, palette[best]) ? i : best, 0);
    const numbers = new Map([...counts.keys()].map((colour) => [colour, nearest(colour)]));
    const text = Array.from(colours, (colour) => String.fromCharCode(numbers.get(colour))).join('');
    return { width, height, palette: palette.flatMap(parts), pixels: btoa(text) };
  }, urlOf(png));

const CRC = Array.from({ length: 256 }, (_, byte) => {
  let crc = byte;
  for (let bit = 0; bit < 8; ++bit) {
    crc = crc & 1 ? 0xedb88320 ^ (crc >>> 1) : crc >>> 1;
  }
  return crc;
});

function crcOf(bytes) {
  let crc = 0xffffffff;
  for (const byte of bytes) {
    crc = CRC[(crc ^ byte) & 255] ^ (crc >>> 8);
  }
  return (crc ^ 0xffffffff) >>> 0;
}

function number(value) {
  const bytes = Buffer.alloc(4);
  bytes.writeUInt32BE(value);
  return bytes;
}

function chunk(type, data) {
  const body = Buffer.concat([Buffer.from(type), data]);
  return Buffer.concat([number(data.length), body, number(crcOf(body))]);
}

// The same picture with a palette: a third of the bytes.
export async function smallPng(png, page) {
  const { width, height, palette, pixels } = await indexed(png, page);
  const bytes = Buffer.from(pixels, 'base64');
  const rows = Array.from({ length: height }, (_, y) =>
    Buffer.concat([Buffer.of(0), bytes.subarray(y * width, (y + 1) * width)]));
  return Buffer.concat([
    Buffer.of(0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a),
    chunk('IHDR', Buffer.concat([number(width), number(height), Buffer.of(8, 3, 0, 0, 0)])),
    chunk('PLTE', Buffer.from(palette)),
    chunk('IDAT', deflateSync(Buffer.concat(rows), { level: 9 })),
    chunk('IEND', Buffer.alloc(0)),
  ]);
}
