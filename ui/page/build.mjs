// Builds the page resource: the modules bundled by esbuild and the style
// sheet minified, both inlined into index.html, so the program serves one
// self-contained file. Usage: node ui/page/build.mjs <output.html>
import { readFile, writeFile, mkdir } from 'node:fs/promises';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const PAGE_LIMIT_BYTES = 150 * 1024;
const here = dirname(fileURLToPath(import.meta.url));
const output = process.argv[2];
if (!output) throw new Error('usage: node build.mjs <output.html>');

async function bundle(entry, loader) {
  const result = await build({
    entryPoints: [join(here, entry)],
    bundle: true,
    minify: true,
    write: false,
    format: 'iife',
    target: ['chrome110', 'safari16'],
    loader,
    // The font and pictures are separate resources on the page's own host.
    external: ['/Cairo.ttf', '/images/*'],
    legalComments: 'none',
  });
  // Inlined text must not end the element that holds it.
  return result.outputFiles[0].text.replaceAll('</', '<\\/');
}

const [html, script, style] = await Promise.all([
  readFile(join(here, 'index.html'), 'utf8'),
  bundle('src/main.js'),
  bundle('style.css', { '.css': 'css' }),
]);
const page = html
  .replace('<!--STYLE-->', () => `<style>${style}</style>`)
  .replace('<!--SCRIPT-->', () => `<script>${script}</script>`);
const size = Buffer.byteLength(page);
if (size > PAGE_LIMIT_BYTES) throw new Error(`the page is ${size} bytes, over its ${PAGE_LIMIT_BYTES}-byte budget`);
await mkdir(dirname(output), { recursive: true });
await writeFile(output, page);
