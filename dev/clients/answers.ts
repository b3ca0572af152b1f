// What the calls of both generated clients share.

type Answer = { success: true } | { success: false; error: { code: number } };

/** The answer, if it is a success. */
export function successOf<T extends Answer>({ data }: { data?: T }) {
  if (!data?.success) {
    throw new Error(data ? `error ${data.error.code}` : "no answer");
  }
  return data as Extract<T, { success: true }>;
}

const [address = "http://127.0.0.1:8080"] = process.argv.slice(2);
export { address };

// The schedules are those of a tuner that the sample appliance does not use.
export const tuner = 7;
export const channel = "17540@618000";
export const start = 1900000200;
export const days = "1,1,1,1,1,1,1";
export const show = {
  tuner, id: channel, channel_name: "Channel Cedar", title: "Tea & scones", duration: "00:20",
  start_date: "2030-03-18",
};
