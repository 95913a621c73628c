// Download speed and time left, estimated from successive snapshots. The
// launcher reports bytes, not speed, and snapshots arrive unevenly, so the
// rate is smoothed and only shown once it has settled.

const MIN_INTERVAL_MS = 250;   // closer samples say more about timer jitter than speed
const SETTLE_MS = 2000;        // observed this long before an estimate is shown
const SMOOTHING = 0.3;         // weight of the newest sample

export class TransferRate {
  constructor() {
    this.reset();
  }

  reset() {
    this.first = null;
    this.last = null;
    this.bytesPerSecond = 0;
  }

  // Feeds the bytes downloaded so far at time `nowMs`; returns
  // {bytesPerSecond, secondsLeft}, or null while there is no steady estimate.
  update(downloadedBytes, totalBytes, nowMs) {
    if (this.last && downloadedBytes < this.last.bytes) this.reset();
    if (!this.last) {
      this.first = this.last = { bytes: downloadedBytes, time: nowMs };
      return null;
    }
    const elapsed = nowMs - this.last.time;
    if (elapsed >= MIN_INTERVAL_MS) {
      const sample = ((downloadedBytes - this.last.bytes) * 1000) / elapsed;
      this.bytesPerSecond = this.first === this.last ? sample : this.bytesPerSecond + SMOOTHING * (sample - this.bytesPerSecond);
      this.last = { bytes: downloadedBytes, time: nowMs };
    }
    if (nowMs - this.first.time < SETTLE_MS || this.bytesPerSecond <= 0) return null;
    return {
      bytesPerSecond: this.bytesPerSecond,
      secondsLeft: Math.max(0, totalBytes - downloadedBytes) / this.bytesPerSecond,
    };
  }
}
