// Numbers as text, the same in every locale.

const Minus = '\u2212';

export function fixed(value, digits) {
  if (value === null || value === undefined || Number.isNaN(value)) return '–';
  if (!Number.isFinite(value)) return value > 0 ? '∞' : `${Minus}∞`;
  return value.toFixed(digits).replace(/^-(?=.*[1-9])/, Minus).replace(/^-/, '');
}

// 1:02:03.4, the hours and the digits only as needed.
export function clockText(seconds, digits) {
  const unit = 10 ** digits;
  const ticks = Math.round(seconds * unit);
  const whole = Math.floor(ticks / unit);
  const hours = Math.floor(whole / 3600);
  const minutes = Math.floor(whole / 60) % 60;
  const two = (number) => String(number).padStart(2, '0');
  const fraction = digits ? '.' + String(ticks % unit).padStart(digits, '0') : '';
  return `${hours ? `${hours}:${two(minutes)}` : minutes}:${two(whole % 60)}${fraction}`;
}

export const FlagTitles = {
  voice: 'voice',
  td_voice: 'voice (time)',
  sound: 'sound',
  far_end: 'far end',
  noise_input: 'noise input',
  ultrasound: 'ultrasound',
  position_valid: 'upright',
};
