// The launcher's situations worth a look, as the snapshots it would send,
// at a fixed moment (Monday 23 November 2026, 18:30 UTC).
export const NOW = new Date('2026-11-23T18:30:00Z');

const base = {
  phase: 'idle', progress: 0, currentFile: '', currentFileProgress: 0, filesDone: 0, filesTotal: 0,
  downloadedBytes: 0, totalBytes: 0, orphanFiles: 0, orphanBytes: 0, orphanSample: [],
  status: '', lastError: '', version: '1.0.5 (build 214)', title: 'Vardeni Online', subtitle: 'The realm awaits',
  patchLabel: 'Update', playLabel: 'Play', language: 'en', canPatch: false, canPlay: false, canRepair: false,
  notice: null, maintenance: { active: false, text: '' },
  links: { website: 'https://vardeni.example/', discord: 'https://discord.example/vardeni', shop: 'https://vardeni.example/shop', register: '' },
  feed: {
    utcClock: true,
    patchNote: { title: 'Winter Citadel update', summary: 'The northern citadel opens its gates: a new raid, frost-forged gear and a reworked guild war map. Event rewards are doubled for the first week.',
      coverImage: 'https://launcher.vardeni.invalid/media/cover', publishedAt: '2026-11-20', url: 'https://vardeni.example/news/winter-citadel' },
    events: [
      { title: 'Guild War', iconId: 7, dayOfWeek: 1, startMinutes: 1080, endMinutes: 1200, mode: 'global', activationMinutes: 0 },
      { title: 'Night Hunt', iconId: 38, dayOfWeek: 1, startMinutes: 1260, endMinutes: 1380, mode: 'personal', activationMinutes: 60 },
      { title: 'Treasure Goblins', iconId: 3, dayOfWeek: 2, startMinutes: 720, endMinutes: 780, mode: 'both', activationMinutes: 30 },
      { title: 'Fishing Contest', iconId: 13, dayOfWeek: 4, startMinutes: 600, endMinutes: 720, mode: 'global', activationMinutes: 0 },
      { title: 'Castle Siege', iconId: 8, dayOfWeek: 6, startMinutes: 1200, endMinutes: 1320, mode: 'global', activationMinutes: 0 },
    ],
  },
};
const with_ = (changes) => ({ ...base, ...changes });
const downloading = { phase: 'downloading', currentFile: 'data/maps/northern_citadel/terrain/high_detail/terrain_high_detail_04.pak', currentFileProgress: 0.6,
  filesDone: 112, filesTotal: 301, totalBytes: 1_850_000_000, status: 'Downloading the update…' };
const iconIds = [1, 2, 3, 5, 7, 8, 9, 13, 14, 15, 20, 21, 22, 27, 28, 29];

export const STATES = {
  connecting: { ...base, phase: 'connecting', title: '', subtitle: '', feed: { utcClock: false, patchNote: null, events: [] }, links: {} },
  checking: with_({ phase: 'checking', status: 'Checking game files…' }),
  'patch-available': with_({ phase: 'ready', status: 'An update is available (build 215).', canPatch: true, canRepair: true }),
  // Two snapshots three seconds apart, so speed and time left have settled.
  downloading: [with_({ ...downloading, progress: 0.33, downloadedBytes: 610_000_000 }),
    with_({ ...downloading, progress: 0.37, downloadedBytes: 640_000_000 })],
  verifying: with_({ phase: 'verifying', progress: 0.82, filesDone: 247, filesTotal: 301, status: 'Verifying files…', currentFile: 'bin/vardeni2.exe' }),
  'up-to-date': with_({ phase: 'ready', status: 'Up to date.', canPlay: true, canRepair: true }),
  error: with_({ phase: 'error', status: 'The update failed.', lastError: 'The patch host could not be reached. Check your connection and try again.',
    canRepair: true, notice: { kind: 'error', message: 'Could not reach the patch host.' } }),
  maintenance: with_({ phase: 'maintenance', status: 'The servers are down for maintenance.',
    maintenance: { active: true, text: 'Scheduled maintenance until 20:00 UTC. The launcher checks again on its own.' } }),
  orphans: with_({ phase: 'ready', status: 'Up to date.', canPlay: true, canRepair: true, orphanFiles: 14, orphanBytes: 48_300_000,
    orphanSample: ['data/old_patch/ui_legacy.pak', 'bin/d3d9_wrapper.dll', 'data/maps/test_arena.map', 'readme_old.txt'] }),
  'long-note': with_({ phase: 'ready', status: 'Up to date.', canPlay: true, canRepair: true,
    feed: { utcClock: false, patchNote: { ...base.feed.patchNote, title: 'The Winter Citadel update brings a new raid, frost-forged gear, a reworked guild war map and a week of doubled event rewards for everyone',
      summary: 'Long summary. '.repeat(40) }, events: Array.from({ length: 32 }, (_, i) => ({
      title: `Event ${i + 1}: ${['Boss Rush', 'Arena Night', 'Merchant Fair', 'Moonlight Hunt'][i % 4]} with a rather long name`,
      iconId: iconIds[i % iconIds.length], dayOfWeek: i % 7, startMinutes: (i * 97) % 1200, endMinutes: ((i * 97) % 1200) + 120,
      mode: ['global', 'personal', 'both'][i % 3], activationMinutes: 45 })) } }),
};

// The same state in Arabic: the launcher sends its own texts translated.
export function arabic(snapshot) {
  return { ...snapshot, language: 'ar', patchLabel: 'تحديث', playLabel: 'العب', title: snapshot.title && 'فارديني أونلاين',
    subtitle: snapshot.subtitle && 'المملكة بانتظارك', status: snapshot.status && 'حالة اللعبة: ' + snapshot.status };
}
